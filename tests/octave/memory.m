% Two thousand solves and failed calls in one session: resident memory at the end stays where it was after 500.
1;
function bytes = resident ()
    fields = sscanf (fileread ('/proc/self/statm'), '%d');
    bytes = 4096 * fields(2);
end
function stop = unwilling (handle, caller, info)
    error ('refused');
end
prob = struct ('a', sparse ([1 1 1; 2 1 0]), 'c', [3 5 1], 'blc', [-inf -inf], 'buc', [10 8], 'blx', zeros (1, 3));
bag = setfield (setfield (prob, 'ints', struct ('sub', 1:3)), 'bux', [5 5 5]);
one = struct ('KLV_IPAR_MAX_THREADS', 1);
interior = setfield (one, 'KLV_IPAR_OPTIMIZER', 'KLV_OPTIMIZER_INTERIOR_POINT');
iter = struct ('iter', 'unwilling', 'iterhandle', 1);
% command, problem, parameters, callbacks, code, outputs
calls = {
    'maximize echo(0)', prob, one, [], 0, 2
    'maximize echo(0) info param prob symbcon version', prob, interior, [], 0, 2
    'maximize echo(0)', bag, one, [], 0, 2
    'maximize echo(0)', setfield(prob, 'bux', [-1 5 5]), one, [], 0, 2
    'maximize echo(0)', rmfield(prob, 'a'), one, [], 1200, 2
    'maximize echo(0)', setfield(prob, 'c', 1:7), one, [], 1200, 2
    'maximize echo(0)', setfield(prob, 'a', sparse (1, 1, NaN, 2, 3)), one, [], 3004, 2
    'maximize echo(0)', prob, struct('KLV_IPAR_NO_SUCH', 1), [], 1200, 1
    'maximize echo(0)', prob, one, iter, 100007, 2
    'read(no-such-file.mps) echo(0)', [], [], [], 3103, 2
};
wrong = 0;
for k = 1:2000
    row = calls(mod (k, rows (calls)) + 1, :);
    results = cell (1, row{6});
    evalc ('[results{:}] = kalvoopt (row{1:4});');
    r = results{1};
    wrong = wrong + (r ~= row{5});
    if k == 500, early = resident (); end
end
grown = resident () - early;
printf ('grown by %.2f MiB over 1500 calls\n', grown / 2^20);
assert (wrong, 0);
assert (grown < 4 * 2^20);
