% A matrix of low rank from some of its entries.
%
%     minimise    sum (svd (M))                           the nuclear norm, which low rank makes small
%     subject to  M(i,j) = given(i,j)                     where an entry is known
%
% It is the least (trace (U) + trace (V)) / 2 for which [U M; M' V] is positive semidefinite.

rand ('twister', 42);
m = 8;
n = 6;
truth = rand (m, 1) * rand (1, n);                          % rank 1
known = rand (m, n) < 0.75;
[i, j] = find (known);
count = numel (i);
given = truth(known);

prob = struct ();
prob.a = sparse (count, 0);
prob.blc = given;
prob.buc = given;
prob.bardim = m + n;
diagonal = (1:m + n)';
half = ones (m + n, 1) / 2;
prob.barc = struct ('subj', ones (m + n, 1), 'subk', diagonal, 'subl', diagonal, 'val', half);
% M' is in the lower triangle: entry (m + j, i). With its mirror image it counts twice.
prob.bara = struct ('subi', (1:count)', 'subj', ones (count, 1), 'subk', m + j, 'subl', i, 'val', ones (count, 1) / 2);
[r, res] = kalvoopt ('minimize echo(0)', prob);

X = zeros (m + n);
X(tril (true (m + n))) = res.sol.itr.barx;
M = X(m + 1:end, 1:m)';
fprintf ('%s: %d of %d entries were known; largest error %.1e; singular values %s\n', res.sol.itr.solsta, count, m * n, ...
         max (abs (M(:) - truth(:))), mat2str (svd (M)', 3));
assert (max (abs (M(:) - truth(:))) < 1e-3);
assert (abs (sum (svd (M)) - res.sol.itr.pobjval) < 1e-4);

% The proof: a matrix Y on the known entries with norm at most 1 and <Y, given> equal to the optimum.
Y = zeros (m, n);
Y(known) = res.sol.itr.y;
assert (norm (Y) < 1 + 1e-5);
assert (abs (res.sol.itr.y' * given - res.sol.itr.pobjval) < 1e-4);
