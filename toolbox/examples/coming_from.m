% One problem, the point of the simplex next to d, as it is stated for other solvers, and their data taken over.
%
%     minimise  norm (x - d)^2   subject to  sum (x) = 1,  x >= 0

d = [0.9; 0.5; -0.2];
answer = [0.7; 0.3; 0];
n = 3;

% qp:  minimise x'*H*x/2 + q'*x  subject to  A*x = b,  lb <= x <= ub
H = eye (n);  q = -d;  A = ones (1, n);  b = 1;  lb = zeros (n, 1);  ub = [];

prob = struct ('a', sparse (A), 'c', q, 'blc', b, 'buc', b, 'blx', lb, 'bux', ub);
[prob.qosubi, prob.qosubj, prob.qoval] = find (tril (H));
[r, res] = kalvoopt ('minimize echo(0)', prob);
fprintf ('qp      %s\n', mat2str (res.sol.itr.xx', 5));
assert (norm (res.sol.itr.xx - answer) < 1e-4);

% OSQP:  minimise x'*P*x/2 + q'*x  subject to  l <= A*x <= u; its duals are -y
P = speye (n);  A = [ones(1, n); eye(n)];  l = [1; zeros(n, 1)];  u = [1; Inf(n, 1)];

prob = struct ('a', sparse (A), 'c', q, 'blc', l, 'buc', u);
[prob.qosubi, prob.qosubj, prob.qoval] = find (tril (P));
[r, res] = kalvoopt ('minimize echo(0)', prob);
fprintf ('OSQP    %s\n', mat2str (res.sol.itr.xx', 5));
assert (norm (res.sol.itr.xx - answer) < 1e-4);

% SeDuMi:  minimise c'*x  subject to  A*x = b,  x in K; here x, then (t, z) with z = x - d and t >= norm (z); its duals are y
A = [ones(1, n) zeros(1, n + 1); eye(n) zeros(n, 1) -eye(n)];  b = [1; d];  c = [zeros(n, 1); 1; zeros(n, 1)];
K = struct ('f', 0, 'l', n, 'q', n + 1);

prob = struct ('a', sparse (A), 'c', c, 'blc', b, 'buc', b);
prob.blx = [-Inf(K.f, 1); zeros(K.l, 1); -Inf(sum (K.q), 1)];
starts = cumsum ([1 K.q]);
prob.cones = struct ('type', zeros (size (K.q)), 'sub', K.f + K.l + (1:sum (K.q)), 'subptr', starts(1:end - 1));
[r, res] = kalvoopt ('minimize echo(0)', prob);
fprintf ('SeDuMi  %s\n', mat2str (res.sol.itr.xx(1:n)', 5));
assert (norm (res.sol.itr.xx(1:n) - answer) < 1e-4);

% SCS:  minimise c'*x  subject to  A*x + s = b,  s in K; here x, t with t >= norm (x - d); its duals are doty
A = sparse ([ones(1, n) 0; -eye(n) zeros(n, 1); zeros(1, n) -1; -eye(n) zeros(n, 1)]);  b = [1; zeros(n, 1); 0; -d];
c = [zeros(n, 1); 1];
K = struct ('z', 1, 'l', n, 'q', n + 1);

prob = struct ('a', sparse (0, numel (c)), 'c', c, 'f', -A, 'g', b);
quadratic = [repmat(4, 1, numel (K.q)); K.q];               % exponential cones are (s(3), s(2), s(1)) here
prob.accs = [1 K.z 2 K.l quadratic(:)'];
[r, res] = kalvoopt ('minimize echo(0)', prob);
fprintf ('SCS     %s\n', mat2str (res.sol.itr.xx(1:n)', 5));
assert (norm (res.sol.itr.xx(1:n) - answer) < 1e-4);
