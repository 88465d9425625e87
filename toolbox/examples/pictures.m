% Pictures: how a solve went on, and what the matrix looks like. Without a file name a picture is drawn in a window.

rand ('twister', 42);
n = 80;
prob = struct ();
prob.a = [round(95 * rand (5, n)) + 5; kron(eye (10), ones (1, n / 10))];     % five resources, and at most 3 of each group
prob.c = round (sum (prob.a) / 6 + 20 * rand (1, n));
prob.buc = [floor(sum (prob.a(1:5, :), 2) / 3); 3 * ones(10, 1)];
prob.blx = zeros (n, 1);
prob.bux = ones (n, 1);
prob.ints.sub = 1:n;

progress = [tempname() '.png'];
matrix = [tempname() '.png'];
kalvoplot ('matrix', prob, matrix);
param = struct ('KLV_DPAR_TIME_LIMIT', 1);
[r, res] = kalvoopt ('maximize echo(0)', prob, param, kalvoplot ('progress', progress));
fprintf ('%s, %s: %g\n', res.rcodestr, res.sol.int.solsta, res.sol.int.pobjval);

% The picture's numbers: seconds, objective, bound.
data = kalvoplot ('data');
last = data(end, :);
fprintf ('%d points; at the end the objective is %g, the bound %g\n', size (data, 1), last(2), last(3));
delete (progress);
delete (matrix);
