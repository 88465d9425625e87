% Compares kalvoopt, side by side in one run, with the engine's own program and with Octave's glpk.
%
%   bench (toolbox, engine program, folder of generated files, data folder)
%
% Figures are ratios of the smallest (files) or the median (tiny problem) time of alternating runs.
function bench (toolbox, engine, files, data)
    addpath (toolbox);
    against_engine (engine, files);
    second_solves (files);
    against_glpk (fullfile (data, 'lp', 'afiro.mps'));
    progress_calls ();
end

% Engine program and kalvoopt with their defaults, and kalvoopt with dual simplex, the program's default for linear problems.
function against_engine (engine, folder)
    repeats = 5;
    start = min (arrayfun (@(k) seconds_of (@() system ([engine ' --version > /dev/null'])), 1:20));
    printf ('\nfile to answer, against the engine''s own program less its start (%.1f ms)\n', 1e3 * start);
    printf ('%-20s %10s %10s %7s %10s %7s\n', 'file', 'engine ms', 'simplex ms', 'ratio', 'default ms', 'ratio');
    settings = {struct('KLV_IPAR_OPTIMIZER', 'KLV_OPTIMIZER_DUAL_SIMPLEX'), struct()};
    ratios = zeros (0, 2);
    integer = [];
    for file = {dir(fullfile (folder, '*.mps')).name}
        path = fullfile (folder, file{1});
        % The program leaves a log in its current folder.
        run = sprintf ('cd ''%s'' && %s ''%s'' > /dev/null', folder, engine, path);
        theirs = inf (repeats, 1);
        ours = inf (repeats, 2);
        for k = 1:repeats
            theirs(k) = seconds_of (@() system (run));
            for j = 1:2
                ours(k, j) = seconds_of (@() solved (['read(' path ') minimize echo(0)'], [], settings{j}));
            end
        end
        best = [min(theirs) - start, min(ours)];
        ratios(end + 1, :) = best(2:3) / best(1);
        integer(end + 1) = any (strncmp (file{1}, {'covering', 'knapsack'}, 8));
        printf ('%-20s %10.1f %10.1f %7.2f %10.1f %7.2f\n', file{1}, 1e3 * best(1:2), ratios(end, 1), 1e3 * best(3), ...
                ratios(end, 2));
    end
    for kind = {'linear', ratios(! integer, :); 'integer', ratios(integer == 1, :); 'all', ratios}'
        printf ('geometric mean, %-15s %18.2f %18.2f\n', kind{1}, exp (mean (log (kind{2}))));
    end
end

function against_glpk (file)
    [~, res] = kalvoopt (['read(' file ') echo(0)']);
    prob = res.prob;
    m = rows (prob.a);
    % glpk takes one right-hand side for each row.
    type = repmat ('S', 1, m);
    type(isinf (prob.blc)) = 'U';
    type(isinf (prob.buc)) = 'L';
    rhs = prob.buc;
    rhs(type == 'L') = prob.blc(type == 'L');
    kind = repmat ('C', 1, columns (prob.a));
    prob = rmfield (prob, {'names', 'objsense'});
    param = struct ('KLV_IPAR_OPTIMIZER', 'KLV_OPTIMIZER_DUAL_SIMPLEX', 'KLV_IPAR_MAX_THREADS', 1);
    calls = {
        'glpk', @() glpk(prob.c, prob.a, rhs, prob.blx, prob.bux, type, kind, 1, struct ('msglev', 0))
        'kalvoopt, all', @() solved('minimize echo(0)', prob)
        'kalvoopt, one simplex', @() solved('minimize echo(0)', prob, param)
        'kalvoopt, load only', @() kalvoopt('min echo(0)', prob)
        'kalvoopt, empty call', @() kalvoopt('echo(0)')
    };
    repeats = 400;
    times = zeros (rows (calls), repeats);
    for k = 1:repeats
        for j = 1:rows (calls)
            times(j, k) = seconds_of (calls{j, 2});
        end
    end
    middle = median (times, 2);
    printf ('\nafiro from a record\n');
    for j = 1:rows (calls)
        printf ('%-24s %8.3f ms %7.2f\n', calls{j, 1}, 1e3 * middle(j), middle(j) / middle(1));
    end
    % The times that the library measures: whole optimisation, and engine.
    items = {'OPTIMIZE', 'PRESOLVE', 'SIMPLEX', 'CHECK'};
    times = zeros (numel (items), repeats);
    for k = 1:repeats
        [~, res] = solved ('minimize info echo(0)', prob, param);
        times(:, k) = cellfun (@(item) res.info.(['KLV_DINF_TIME_' item]), items)';
    end
    printf ('of which %s %.3f ms\n', [lower(items); num2cell(1e3 * median (times, 2)')]{:});
end

% A second solve after a small change: started from the first solution, against without a start.
function second_solves (folder)
    repeats = 3;
    cold = struct ('KLV_IPAR_WARM_START', 'KLV_OFF');
    printf ('\nsecond solve after a small change, from the first solution, against a cold one (from 100 ms on)\n');
    printf ('%-28s %10s %10s %7s\n', 'file, change', 'cold ms', 'warm ms', 'ratio');
    ratios = [];
    for file = {dir(fullfile (folder, '*.mps')).name}
        [~, res] = kalvoopt (['read(' fullfile(folder, file{1}) ') minimize echo(0)']);
        if ! isfield (res.sol, 'bas')
            continue
        end
        for change = {'bounds', 'costs', 'nothing'}
            prob = changed (res.prob, change{1});
            prob.sol = res.sol;
            times = inf (2, repeats);
            for k = 1:repeats
                times(1, k) = seconds_of (@() solved ('minimize echo(0)', prob, cold));
                times(2, k) = seconds_of (@() solved ('minimize echo(0)', prob));
            end
            best = 1e3 * min (times, [], 2);
            if best(1) < 100
                continue
            end
            printf ('%-28s %10.1f %10.1f %7.2f\n', [file{1} ', ' change{1}], best, best(2) / best(1));
            ratios(end + 1) = best(2) / best(1);
        end
    end
    printf ('%-28s %29.2f\n', 'geometric mean', exp (mean (log (ratios))));
end

% Changes one in twenty costs, or bounds of inequalities, by up to five per cent; bounds are loosened, so that points stay feasible.
function prob = changed (prob, what)
    vary = @(values) abs (values) .* (mod ((1:numel (values))', 20) == 0) .* mod ((1:numel (values))', 7) / 140;
    if strcmp (what, 'bounds')
        open = prob.blc(:) ~= prob.buc(:);
        prob.buc(open & isfinite (prob.buc(:))) += vary (prob.buc)(open & isfinite (prob.buc(:)));
        prob.blc(open & isfinite (prob.blc(:))) -= vary (prob.blc)(open & isfinite (prob.blc(:)));
        limited = isfinite (prob.bux(:));
        prob.bux(limited) += vary (prob.bux)(limited);
    elseif strcmp (what, 'costs')
        prob.c += vary (prob.c);
    end
end

% The calling thread does nothing during a search but wait and call: its CPU time between two calls is the cost of the calls
% between them.
function progress_calls ()
    rows = 20;
    columns = 200;
    prob.a = sparse (1 + mod (reshape (1:rows * columns, rows, columns) * 7919, 97));
    prob.c = 20 + mod ((1:columns)' * 31, 43);
    prob.buc = sum (prob.a, 2) / 3;
    prob.blx = zeros (columns, 1);
    prob.bux = ones (columns, 1);
    prob.ints.sub = 1:columns;
    global progress_times
    progress_times = [];
    calls = 200;
    kalvoopt ('maximize echo(0)', prob, [], struct ('iter', 'time_progress', 'iterhandle', calls));
    printf ('\n%d progress calls, %.3f ms each\n', calls, 1e3 * diff (progress_times) / calls);
end

function [r, res] = solved (varargin)
    [r, res] = kalvoopt (varargin{:});
    if r ~= 0 || ! any (strcmp (struct2cell (res.sol){1}.solsta, {'OPTIMAL', 'INTEGER_OPTIMAL'}))
        error ('bench: not solved: %d %s', r, res.rmsg);
    end
end

function seconds = seconds_of (f)
    begin = tic;
    f ();
    seconds = toc (begin);
end
