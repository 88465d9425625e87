% Large problems into the library and out of it.
%
%   large (toolbox, folder)
%
% - Ten million nonzeros in a million columns: time and peak memory of both processes, against the size of the sparse matrix, for a
%   simplex run without presolve that may take no iteration: all that lies between the prompt and the engine's start.
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
    param = struct ('KLV_IPAR_OPTIMIZER', 'KLV_OPTIMIZER_PRIMAL_SIMPLEX', 'KLV_IPAR_PRESOLVE', 0, ...
                    'KLV_IPAR_SIMPLEX_ITERATION_LIMIT', 0);
    for worker = [0 1]
        param.KLV_IPAR_WORKER = worker;
        [seconds, growth, r, res] = measured (@() kalvoopt ('minimize info echo(0)', prob, param));
        own = 1e6 * res.info.KLV_DINF_WORKER_MEMORY;
        printf ('\n%d nonzeros, optimisers %s: %.2f s (code %d); peak %.2f times the matrix here, itself included, %.2f there', ...
                nnz (prob.a), {'in this process', 'in their own'}{worker + 1}, seconds, r, 1 + growth / bytes, own / bytes);
    end
    printf ('\n');
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
