% An infeasible problem, and its certificate: a proof that no point satisfies all constraints.

% x1 + x2 >= 4,  x1 - x2 = 1,  x1 + 3 x2 <= 5,  x >= 0
prob = struct ();
prob.a = [1 1; 1 -1; 1 3];
prob.c = [1 1];
prob.blc = [4 1 -Inf];
prob.buc = [Inf 1 5];
prob.blx = [0 0];

[r, res] = kalvoopt ('minimize echo(0)', prob);
bas = res.sol.bas;
fprintf ('%s, %s; the code is %d: infeasible is an answer, not a failure\n', bas.prosta, bas.solsta, r);

% The certificate is in the duals. Add up the constraints with the multipliers y, and the variables' bounds with
% slx and sux: all coefficients cancel ...
leftover = prob.a' * bas.y + bas.slx - bas.sux;
fprintf ('coefficients of the sum: %g %g\n', leftover);

% ... while the right-hand sides add up to more than 0: the constraints together say that 0 is at least 1.
has_lower = isfinite (prob.blc');
has_upper = isfinite (prob.buc');
sum_of_sides = prob.blc(has_lower) * bas.slc(has_lower) - prob.buc(has_upper) * bas.suc(has_upper);
fprintf ('0 >= %g\n', sum_of_sides);

% Constraints with a multiplier are the ones that contradict each other.
fprintf ('constraints that contradict each other: %s\n', mat2str (find (abs (bas.y') > 1e-9)));
