% A problem that is solved again after a change: the first solution is where the second solve starts.

% A transport problem: 30 depots, 60 customers, a price for each way.
depots = 30;
customers = 60;
ways = depots * customers;
[depot, customer] = ndgrid (1:depots, 1:customers);
prob = struct ();
prob.a = [sparse(depot(:), 1:ways, 1, depots, ways); sparse(customer(:), 1:ways, 1, customers, ways)];
prob.c = 1 + mod (depot(:) .* customer(:) * 37, 101);
prob.blc = [-Inf(depots, 1); 10 * ones(customers, 1)];     % each customer needs 10,
prob.buc = [25 * ones(depots, 1); Inf(customers, 1)];      % a depot has 25
prob.blx = zeros (ways, 1);

[r, res] = kalvoopt ('minimize info echo(0)', prob);
fprintf ('first: %g, after %d iterations\n', res.sol.bas.pobjval, res.info.KLV_IINF_SIMPLEX_ITERATIONS);

% One customer needs more. res.sol is the start, of which simplex uses the basis.
prob.sol = res.sol;
prob.blc(depots + 1) = 12;
[r, again] = kalvoopt ('minimize info echo(0)', prob);
fprintf ('second: %g, after %d iterations\n', again.sol.bas.pobjval, again.info.KLV_IINF_SIMPLEX_ITERATIONS);

% An integer search can also start from some known values; NaN marks unknown ones.
prob.ints.sub = 1:ways;
prob.sol = struct ('int', struct ('xx', NaN (ways, 1)));
prob.sol.int.xx(again.sol.bas.xx == 0) = 0;
[r, whole] = kalvoopt ('minimize echo(0)', prob);
fprintf ('in whole numbers: %g\n', whole.sol.int.pobjval);
