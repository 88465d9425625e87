% Published linear problems, file to answer, against the engine's own program with its defaults and two threads.
%
%   published (toolbox, engine program, folder of problems, folder for files)
%
% Files are .mps, .mps.gz, or .mat with A, b, c, lo, hi and z0: min c'x + z0, Ax = b, lo <= x <= hi, 1e20 meaning infinite. Times
% are medians of three alternating runs; the program's are less its start and end at 60 s. Then every file again by interior
% point with a basis: both solutions must be optimal.
function published (toolbox, engine, source, folder)
    addpath (toolbox);
    files = unpack (source, folder);
    start = median (arrayfun (@(k) seconds_of (@() system ([engine ' --version > /dev/null'])), 1:21));
    solve ('read(%s) minimize echo(0)', files{1});
    printf ('\npublished files against the engine''s own program (its start, %.1f ms, taken off)\n', 1e3 * start);
    printf ('%-16s %10s %10s %7s  %s\n', 'file', 'engine s', 'ours s', 'ratio', 'won by (1 simplex, 3 interior point)');
    times = zeros (numel (files), 2);
    for k = 1:numel (files)
        run = sprintf ('cd ''%s'' && timeout 60 %s --threads 2 ''%s'' > /dev/null', folder, engine, files{k});
        each = zeros (3, 2);
        for j = 1:3
            each(j, 1) = seconds_of (@() system (run)) - start;
            each(j, 2) = seconds_of (@() solve ('read(%s) minimize echo(0)', files{k}));
        end
        times(k, :) = median (each);
        res = solve ('read(%s) minimize info echo(0)', files{k});
        [~, name] = fileparts (files{k});
        printf ('%-16s %10.3f %10.3f %7.2f  %d\n', name, times(k, :), times(k, 2) / times(k, 1), res.info.KLV_IINF_OPTIMIZER);
    end
    for kind = {'0.1 s and more', times(:, 1) >= 0.1; 'below 0.1 s', times(:, 1) < 0.1}'
        ratios = times(kind{2}, 2) ./ times(kind{2}, 1);
        printf ('geometric mean, %-16s %.2f, largest %.2f, of %d files\n', kind{1}, exp (mean (log (ratios))), max (ratios), ...
                numel (ratios));
    end
    for k = 1:numel (files)
        solve ('read(%s) minimize echo(0)', files{k}, struct ('KLV_IPAR_OPTIMIZER', 'KLV_OPTIMIZER_INTERIOR_POINT'));
    end
    printf ('all %d files by interior point with a basis: both solutions optimal\n', numel (files));
end

function res = solve (command, file, param)
    if nargin < 3
        param = struct ();
    end
    [r, res] = kalvoopt (sprintf (command, file), [], param);
    if r ~= 0 || ! strcmp (res.sol.itr.solsta, 'OPTIMAL') || ! strcmp (res.sol.bas.solsta, 'OPTIMAL')
        error ('bench: %s not solved: %d %s', file, r, res.rmsg);
    end
end

function files = unpack (source, folder)
    [~, ~] = mkdir (folder);
    files = {};
    for file = {dir(source).name}
        [~, name, kind] = fileparts (file{1});
        from = fullfile (source, file{1});
        name = strrep (name, '.mps', '');
        to = fullfile (folder, [name '.mps']);
        if strcmp (kind, '.mat')
            data = load (from);
            prob = struct ('a', sparse (data.A), 'c', full (data.c(:)), 'blc', full (data.b(:)), 'buc', full (data.b(:)), ...
                           'blx', full (data.lo(:)), 'bux', full (data.hi(:)), 'cfix', full (data.z0));
            prob.blx(prob.blx <= -1e20) = -Inf;
            prob.bux(prob.bux >= 1e20) = Inf;
            kalvoopt (sprintf ('min echo(0) write(%s)', to), prob);
        elseif strcmp (kind, '.gz')
            system (sprintf ('gzip -dc ''%s'' > ''%s''', from, to));
        elseif strcmp (kind, '.mps')
            copyfile (from, to);
        else
            continue
        end
        files{end + 1} = to;
    end
end

function seconds = seconds_of (f)
    begin = tic;
    f ();
    seconds = toc (begin);
end
