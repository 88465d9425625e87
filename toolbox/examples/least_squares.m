% Least squares: with nonnegative coefficients, and robust against errors of the matrix.
%
%     minimise  norm (A*x - b)^2 / 2   subject to  x >= 0            a quadratic problem
%
%     minimise  norm (A*x - b) + rho * norm (x)                      two quadratic cones
%
% The second objective is the largest of norm ((A + D)*x - b) over all errors D whose norm is at most rho.

rand ('twister', 42);
m = 20;
n = 5;
A = rand (m, n);
b = A * [1; 2; 0; -0.5; 3] + 0.1 * rand (m, 1);

% x'*(A'*A)*x/2 - (A'*b)'*x + b'*b/2. No rows: a says how many variables there are.
prob = struct ();
prob.a = sparse (0, n);
prob.c = -A' * b;
prob.cfix = b' * b / 2;
prob.blx = zeros (1, n);
[prob.qosubi, prob.qosubj, prob.qoval] = find (tril (A' * A));
[r, res] = kalvoopt ('minimize echo(0)', prob);
x = res.sol.itr.xx;
fprintf ('nonnegative: residual %.4f, x = %s\n', norm (A * x - b), mat2str (x', 3));

% The gradient is 0 where x > 0, and does not point below 0 elsewhere.
gradient = A' * (A * x - b);
assert (all (x > -1e-6) && all (gradient > -1e-5) && abs (x' * gradient) < 1e-5);

% Variables x, s, t:  minimise s + rho * t,  (s, A*x - b) and (t, x) in quadratic cones.
rho = 0.5;
robust = struct ();
robust.a = sparse (0, n + 2);
robust.c = [zeros(1, n) 1 rho];
robust.f = sparse ([zeros(1, n) 1 0; A zeros(m, 2); zeros(1, n) 0 1; eye(n) zeros(n, 2)]);
robust.g = [0; -b; zeros(n + 1, 1)];
robust.accs = [4 m + 1 4 n + 1];
[r, res] = kalvoopt ('minimize echo(0)', robust);
x = res.sol.itr.xx(1:n);
residual = A * x - b;
fprintf ('robust: residual %.4f, x = %s\n', norm (residual), mat2str (x', 3));

% The worst error of norm rho attains the value, and the gradient of the objective is 0.
worst = rho * residual * x' / (norm (residual) * norm (x));
fprintf ('worst residual %.6f, proved at least %.6f\n', norm ((A + worst) * x - b), res.sol.itr.dobjval);
assert (abs (norm ((A + worst) * x - b) - res.sol.itr.dobjval) < 1e-5);
assert (norm (A' * residual / norm (residual) + rho * x / norm (x)) < 1e-3);
