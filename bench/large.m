% Large problems into the library and out of it.
%
%   large (toolbox, folder)
%
% - Ten million nonzeros in a million columns: time and peak memory, against the size of the sparse matrix, from the prompt to
%   the return of the engine's pass-model call. A stop at the first progress point of the engine ends the run right after
%   that call, unless the run had to be abandoned: then the call took longer than the time that is printed.
% - The same problem loaded and returned.
% - Files of a problem of four and a half million nonzeros, written from a record into the folder and read into one.
function large (toolbox, folder)
    addpath (toolbox);
    problem_in_and_out (problem (1000000));
    files (problem (450000), folder);
end

function prob = problem (columns)
    rows = columns / 10;
    entries = 10 * columns;
    row = mod (7919 * (0:entries - 1)', rows) + 1;
    column = ceil ((1:entries)' / 10);
    prob.a = sparse (row, column, 1 + mod ((1:entries)', 7), rows, columns);
    prob.c = ones (columns, 1);
    prob.blc = ones (rows, 1);
    prob.blx = zeros (columns, 1);
end

function problem_in_and_out (prob)
    columns = numel (prob.c);
    bytes = 16 * nnz (prob.a) + 8 * (columns + 1);
    stopped = @() kalvoopt ('minimize info echo(0)', prob, struct ('KLV_IPAR_OPTIMIZER', 'KLV_OPTIMIZER_DUAL_SIMPLEX'), ...
                            struct ('iter', 'stop_in_presolve', 'iterhandle', 0));
    [seconds, growth, r, res] = measured (stopped);
    printf ('\n%d nonzeros: %.2f s to the return of the pass-model call (code %d, %d runs abandoned); ', nnz (prob.a), ...
            seconds, r, res.info.KLV_IINF_ABANDONED_WORKERS);
    printf ('peak %.2f times the matrix, itself included\n', 1 + growth / bytes);
    [seconds, growth] = measured (@() kalvoopt ('prob echo(0)', prob));
    printf ('loaded and returned: %.2f s; peak %.2f times the matrix, the library''s and the result included\n', seconds, ...
            growth / bytes);
end

% Resets the peak of memory.
function [seconds, growth, r, res] = measured (call)
    fid = fopen ('/proc/self/clear_refs', 'w');
    fputs (fid, '5');
    fclose (fid);
    before = status_bytes ('VmRSS');
    begin = tic;
    [r, res] = call ();
    seconds = toc (begin);
    growth = status_bytes ('VmHWM') - before;
end

function files (prob, folder)
    printf ('\n%-10s %8s %12s %12s\n', 'file', 'MB', 'write MB/s', 'read MB/s');
    for extension = {'mps', 'mps.gz', 'lp', 'json'}
        file = fullfile (folder, ['large.' extension{1}]);
        seconds = inf (3, 2);
        for k = 1:3
            seconds(k, 1) = measured (@() kalvoopt (['write(' file ') echo(0)'], prob));
            seconds(k, 2) = measured (@() kalvoopt (['read(' file ') echo(0)']));
        end
        megabytes = dir (file).bytes / 1e6;
        printf ('%-10s %8.1f %12.0f %12.0f\n', extension{1}, megabytes, megabytes ./ min (seconds));
        delete (file);
    end
end

function bytes = status_bytes (item)
    found = regexp (fileread ('/proc/self/status'), [item ':\s*(\d+) kB'], 'tokens', 'once');
    bytes = 1024 * str2double (found{1});
end
