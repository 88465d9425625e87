% Logistic regression with a quadratic penalty, by exponential cones.
%
%     minimise  sum_i log (1 + exp (-d(i) * X(i,:)*w)) + lambda * norm (w)^2 / 2          d(i) is 1 or -1
%
% t >= log (1 + exp (u)) says exp (u - t) + exp (-t) <= 1: with p + q <= 1, (p, 1, u - t) and (q, 1, -t) are in exponential cones.

rand ('twister', 42);
m = 40;
lambda = 0.1;
X = [ones(m, 1) 4 * rand(m, 2) - 2];
d = sign (X * [0.3; 1; -2] + 3 * rand (m, 1) - 1.5);
n = size (X, 2);

% Variables w, t, p, q (m each) and s >= norm (w)^2 / 2.
zero = sparse (m, m);
one = speye (m);
none = sparse (m, 1);
prob = struct ();
prob.a = [sparse(m, n) zero one one none];
prob.buc = ones (m, 1);
prob.c = [zeros(1, n) ones(1, m) zeros(1, 2 * m) lambda];

margins = -spdiags (d, 0, m, m) * sparse (X);               % u = margins * w
p_cones = [sparse(m, n) zero one zero none; sparse(m, n + 3 * m + 1); margins -one zero zero none];
q_cones = [sparse(m, n) zero zero one none; sparse(m, n + 3 * m + 1); sparse(m, n) -one zero zero none];
by_cone = reshape (reshape (1:3 * m, m, 3)', [], 1);        % all first members, all second ones, ... to cone after cone
constants = repmat ([0; 1; 0], m, 1);
penalty = [sparse(1, n + 3 * m) 1; sparse(1, n + 3 * m + 1); speye(n) sparse(n, 3 * m + 1)];
prob.f = [p_cones(by_cone, :); q_cones(by_cone, :); penalty];
prob.g = [constants; constants; 0; 1; zeros(n, 1)];
prob.accs = [repmat([6 3], 1, 2 * m) 5 n + 2];

[r, res] = kalvoopt ('minimize echo(0)', prob);
w = res.sol.itr.xx(1:n);
value = sum (log1p (exp (margins * w))) + lambda * (w' * w) / 2;
fprintf ('%s: w = %s, value %.6f\n', res.sol.itr.solsta, mat2str (w', 4), value);
fprintf ('%d of %d points are on the right side\n', sum (sign (X * w) == d), m);

% The value is that of the function itself, and its gradient is 0.
assert (abs (value - res.sol.itr.dobjval) < 1e-5 * value);
gradient = margins' * (1 ./ (1 + exp (-margins * w))) + lambda * w;
assert (norm (gradient) < 1e-3);
