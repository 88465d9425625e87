% Random calls in one session, 500 or as many as KALVO_CALLS says, from KALVO_FIRST on: each returns a code, with a result
% that agrees with it; then good calls work, and memory stays where it was.
% Call number k is the same in every run. The last number printed before an end of the session is the call that ended it.
1;
function one = any_of (list)
    one = list{randi (numel (list))};
end

% Of every class, shape and depth.
function v = odd_value (depth = 2)
    n = randi (5) - 1;
    x = randi (6, 1, n) - 2;
    if n > 0 && rand < 0.2
        x(randi (n)) = any_of ({NaN, Inf, -Inf, 1e300, 2^32 + 1, 0.5, -1e20});
    end
    makers = {@() [], @() x, @() x', @() 1:n, @() sparse (x), @() sparse (x'), @() sparse (x' > 0), @() x > 0, ...
        @() complex (x, 1), @() sparse (x' * 1i), @() single (x), @() feval (any_of ({'int8', 'uint8', 'int16', ...
        'uint16', 'int32', 'uint32', 'int64', 'uint64'}), x), @() ones (n, 1, 2), @() eye (3), @() eye (3)([2 1 3], :), ...
        @() zeros (0, n), @() zeros (n, 0, 'int8'), @() 'text', @() '', @() "z\303\251\342\202\254", @() ['ab'; 'cd'], ...
        @() char ([97 0 98]), @() {}, @() num2cell (x), @() cell (n, 1), @() {'a'; ''}, @() struct (), ...
        @() struct ('sub', {x}), @() struct ('sub', num2cell (x)), @() struct ([]), @() @sin, @() @(y) y + n, ...
        @() containers.Map ('a', 1), @() containers.Map (), @() inputParser (), ...
        @() {odd_value(depth - 1), odd_value(depth - 1)}, @() struct ('sub', {odd_value(depth - 1)})};
    v = makers{randi (numel (makers) - 2 * (depth == 0))} ();
end

function record = damage (record, fields)
    for times = 1:randi (3)
        name = any_of (fields);
        if isfield (record, name) && rand < 0.3
            record = rmfield (record, name);
        else
            record.(name) = odd_value ();
        end
    end
end

function prob = random_problem ()
    m = randi (5) - 1;
    n = randi (5);
    prob = struct ('a', randi (9, m, n) - 4, 'c', randi (9, 1, n) - 4, 'blc', -randi (5, m, 1), 'buc', randi (9, 1, m), ...
        'blx', randi (3, n, 1) - 2, 'bux', randi (5, 1, n));
    for name = {'a', 'blc', 'blx'}
        if rand < 0.4, prob.(name{1}) = sparse (prob.(name{1})); end
    end
    if rand < 0.3, prob.ints.sub = randi (n, 1, 2); end
    if rand < 0.2
        prob.names = damage (struct ('var', {num2cell(repmat ('x', n, 1))}), {'var', 'con', 'name', 'obj', 'cone'});
    end
    if rand < 0.2
        values = struct ('xx', rand (n, 1), 'y', rand (m, 1), 'skx', randi (7, n, 1) - 1, 'slx', rand (1, n));
        prob.sol.(any_of ({'itr', 'bas', 'int'})) = damage (values, {'xx', 'y', 'skx', 'skc', 'slx', 'barx', 'doty'});
    end
    if rand < 0.3
        prob = damage (prob, {'a', 'c', 'cfix', 'blc', 'buc', 'blx', 'bux', 'ints', 'names', 'sol', 'qosubi', 'qoval', ...
            'qcval', 'cones', 'f', 'g', 'accs', 'bardim', 'bara', 'prisen', 'primalrepair', 'objsense', 'unknown'});
    end
end

function command = random_command ()
    words = {'prob', 'info', 'param', 'symbcon', 'version', 'statuskeys(1)', 'echo(3)', 'echo(9)', 'debug(1)', 'anapro', ...
        'nokeepenv', 'min', 'max', 'write(w.mps)', 'log(l.txt)', 'read(w.mps)', 'read(none)', 'echo(', ')', 'x', "\303\251"};
    command = any_of ({'minimize', 'maximize', ''});
    for times = 2:randi (4)
        command = [command ' ' words{ceil(numel (words) * rand ^ 2.5)}];
    end
end

function record = random_settings ()
    record = struct ('KLV_DPAR_TIME_LIMIT', 2);
    switch randi (4)
        case 1, record.KLV_IPAR_OPTIMIZER = any_of ({'KLV_OPTIMIZER_INTERIOR_POINT', 'KLV_OPTIMIZER_PRIMAL_SIMPLEX', 3});
        case 2, record.KLV_IPAR_PRESOLVE = randi (5) - 2;
        case 3, record = damage (record, {'KLV_IPAR_OPTIMIZER', 'KLV_DPAR_GAP_TOLERANCE', 'KLV_SPAR_DATA_FILE', 'x'});
    end
end

function record = random_callback ()
    functions = {'quiet', 'stopping', 'failing', 'odd', 'again', 'nowhere'};
    record = struct ('iterhandle', {odd_value()}, 'loghandle', {odd_value()});
    record.(any_of ({'iter', 'log'})) = any_of (functions);
    if rand < 0.2, record = damage (record, {'iter', 'log', 'iterhandle', 'loghandle'}); end
end

function inputs = random_call ()
    inputs = {random_command(), random_problem(), random_settings(), random_callback(), [], odd_value(), odd_value()};
    if rand < 0.1, inputs{randi (5)} = odd_value (); end
    if rand < 0.05, inputs{5} = struct ('host', {odd_value()}); end
    inputs = inputs(1:any_of ({0, 1, 3, 3, 3, 3, 4, 4, 4, 5, 6, 7}));
end

function quiet (varargin), end
function stop = stopping (varargin), stop = 1; end
function stop = failing (varargin), error ('on purpose'); end
function stop = odd (varargin), stop = odd_value (); end
function stop = again (varargin)
    stop = 0;
    [r, res] = kalvoopt ('minimize echo(0)', struct ('a', 1, 'blc', 1));
end

function check_result (r, res)
    assert (isa (r, 'double') && isreal (r) && isscalar (r) && r >= 0);
    assert (isstruct (res) || (isempty (res) && r != 0));
    if isempty (res), return; end
    assert (res.rcode == r && ischar (res.rmsg) && strncmp (res.rcodestr, 'KLV_RES_', 8));
end

% A call whose set-up fails leaves its second output undefined, which the session calls an error.
function [r, res] = called (inputs)
    res = [];
    try
        evalc ('[r, res] = kalvoopt (inputs{:});');
    catch fault
        assert (fault.message, 'element number 2 undefined in return list');
        evalc ('r = kalvoopt (inputs{:});');
        assert (r > 0);
    end
end

function bytes = resident ()
    fields = sscanf (fileread ('/proc/self/statm'), '%d');
    bytes = 4096 * fields(2);
end

function number = setting (name, absent)
    number = str2double (getenv (name));
    number(isnan (number)) = absent;
end

count = setting ('KALVO_CALLS', 500);
first = setting ('KALVO_FIRST', 1);
good = struct ('a', [1 2; 2 1], 'c', [1 2], 'blc', [3 3], 'blx', [0 0]);
failed = 0;
codes = [];
for k = first:first + count - 1
    rand ('twister', k);
    printf ('%d\n', k);
    fflush (stdout);
    inputs = random_call ();
    try
        if rand < 0.1
            evalc ('kalvoopt (inputs{:});');
        else
            [r, res] = called (inputs);
            check_result (r, res);
            codes(end + 1) = r;
        end
        [r, res] = kalvoopt ('minimize echo(0)', good);
        assert (r == 0 && abs (res.sol.bas.pobjval - 3) < 1e-9);
    catch fault
        failed = failed + 1;
        printf ('call %d: %s\n', k, fault.message);
        disp (inputs);
    end
    if k == first + floor (count / 2), middle = resident (); end
end
grown = (resident () - middle) / 2^20;
printf ('%d of %d calls without a fault, %d failed, grown by %.2f MiB over the second half\n', sum (codes == 0), count, ...
    failed, grown);
assert (failed, 0);
assert (grown < 4 + count / 2500);
