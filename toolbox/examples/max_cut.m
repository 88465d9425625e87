% The largest cut of a graph, by its semidefinite relaxation.
%
%     maximise    <L, X> / 4                              L is the Laplacian of the graph
%     subject to  X(i,i) = 1,  X symmetric, positive semidefinite
%
% A cut is X = s*s' with s(i) = 1 or -1. The relaxation bounds all cuts, and signs of random combinations of the columns of a root of
% X are good ones.

rand ('twister', 42);
n = 14;
W = triu (rand (n) < 0.5, 1) .* round (9 * rand (n) + 1);   % weights of the edges
W = W + W';
L = diag (sum (W)) - W;

prob = struct ();
prob.a = sparse (n, 0);                                     % n constraints, no variable but the matrix
prob.blc = ones (n, 1);
prob.buc = ones (n, 1);
prob.bardim = n;
[rows_of, columns_of, values] = find (tril (L) / 4);
prob.barc = struct ('subj', ones (size (values)), 'subk', rows_of, 'subl', columns_of, 'val', values);
each = (1:n)';
prob.bara = struct ('subi', each, 'subj', ones (n, 1), 'subk', each, 'subl', each, 'val', ones (n, 1));
[r, res] = kalvoopt ('maximize echo(0)', prob);
itr = res.sol.itr;

X = zeros (n);
X(tril (true (n))) = itr.barx;                              % barx is the lower triangle, column by column
X = X + tril (X, -1)';
[U, D] = eig (X);
root = U * sqrt (max (D, 0));
signs = sign (root * (rand (n, 100) - 0.5));
found = max (sum (signs .* (L * signs)) / 4);

% All cuts of so small a graph.
cuts = (0:2 ^ (n - 1) - 1)';
cuts = 1 - 2 * mod (floor (cuts * 2 .^ (0:-1:1 - n)), 2);
largest = max (sum (cuts .* (cuts * L), 2)) / 4;
fprintf ('%s: no cut is larger than %.4f; found %g; the largest is %g\n', itr.solsta, itr.dobjval, found, largest);
assert (found <= largest && largest <= itr.dobjval + 1e-4);
assert (found >= 0.878 * largest);

% The duals prove the bound: diag (y) - L/4 is positive semidefinite, so that <L, X> / 4 <= sum (y) for every X.
assert (min (eig (diag (itr.y) - L / 4)) > -1e-5);
assert (abs (sum (itr.y) - itr.pobjval) < 1e-4);
