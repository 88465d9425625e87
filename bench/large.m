% Ten million nonzeros in a million columns: time from the prompt to the return of the engine's pass-model call, and peak
% memory against the size of the sparse matrix. A stop at the first progress point of the engine ends the run right after
% that call, unless the run had to be abandoned: then the call took longer than the time that is printed.
%
%   large (toolbox)
function large (toolbox)
    addpath (toolbox);
    rows = 100000;
    columns = 1000000;
    entries = 10 * columns;
    row = mod (7919 * (0:entries - 1)', rows) + 1;
    column = ceil ((1:entries)' / 10);
    prob.a = sparse (row, column, 1 + mod ((1:entries)', 7), rows, columns);
    clear row column
    prob.c = ones (columns, 1);
    prob.blc = ones (rows, 1);
    prob.blx = zeros (columns, 1);
    bytes = 16 * nnz (prob.a) + 8 * (columns + 1);
    % The peak is counted anew from here.
    fid = fopen ('/proc/self/clear_refs', 'w');
    fputs (fid, '5');
    fclose (fid);
    before = status_bytes ('VmRSS');
    begin = tic;
    [r, res] = kalvoopt ('minimize info echo(0)', prob, struct ('KLV_IPAR_OPTIMIZER', 'KLV_OPTIMIZER_DUAL_SIMPLEX'), ...
                         struct ('iter', 'stop_in_presolve', 'iterhandle', 0));
    seconds = toc (begin);
    growth = status_bytes ('VmHWM') - before;
    printf ('\n%d nonzeros: %.2f s to the return of the pass-model call (code %d, %d runs abandoned); ', nnz (prob.a), ...
            seconds, r, res.info.KLV_IINF_ABANDONED_WORKERS);
    printf ('peak %.2f times the matrix, itself included\n', 1 + growth / bytes);
end

function bytes = status_bytes (item)
    found = regexp (fileread ('/proc/self/status'), [item ':\s*(\d+) kB'], 'tokens', 'once');
    bytes = 1024 * str2double (found{1});
end
