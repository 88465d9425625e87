% A run in a file: problem, parameters and solution, for a report that anyone can replay.

% The run to report, with some settings.
rand ('twister', 1);
prob = struct ('c', rand (60, 1), 'a', sparse (rand (40, 60) .* (rand (40, 60) < 0.3)), 'blc', ones (40, 1));
prob.blx = zeros (60, 1);
prob.names.name = 'a run to report';
param = struct ('KLV_IPAR_OPTIMIZER', 'KLV_OPTIMIZER_DUAL_SIMPLEX', 'KLV_IPAR_PRESOLVE', 'KLV_PRESOLVE_OFF');
[r, res] = kalvoopt ('minimize info echo(0)', prob, param);
fprintf ('the run: %.12g, %d iterations\n', res.sol.bas.pobjval, res.info.KLV_IINF_SIMPLEX_ITERATIONS);

% The file to attach, without and with the solution.
report = [tempname() '.json'];
solved = [tempname() '.json.gz'];
r = kalvoopt (['min echo(0) write(' report ')'], prob, param);
prob.sol = res.sol;
r = kalvoopt (['min echo(0) write(' solved ')'], prob, param);

% Anyone can replay the run: with the same parameters it takes the same way to the same answer.
[r, again] = kalvoopt (['minimize info echo(0) read(' report ')']);
assert (r == 0);
assert (isequal (again.sol.bas.xx, res.sol.bas.xx));
assert (again.info.KLV_IINF_SIMPLEX_ITERATIONS == res.info.KLV_IINF_SIMPLEX_ITERATIONS);
fprintf ('replayed: %.12g, %d iterations\n', again.sol.bas.pobjval, again.info.KLV_IINF_SIMPLEX_ITERATIONS);

% From the file with the solution, a run starts from the solution.
[r, again] = kalvoopt (['minimize info echo(0) read(' solved ')']);
assert (abs (again.sol.bas.pobjval - res.sol.bas.pobjval) < 1e-9);
assert (again.info.KLV_IINF_SIMPLEX_ITERATIONS == 0);
fprintf ('from its solution: %d iterations\n', again.info.KLV_IINF_SIMPLEX_ITERATIONS);

% Parameters of the call override those of the file.
[r, again] = kalvoopt (['minimize echo(0) read(' report ')'], [], struct ('KLV_IPAR_OPTIMIZER', 'KLV_OPTIMIZER_PRIMAL_SIMPLEX'));
fprintf ('by another method: %.12g\n', again.sol.bas.pobjval);
delete (report, solved);
