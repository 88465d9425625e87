% A small integer problem: which of six projects to start with a limited budget and staff.

value = [15 12 9 18 7 11];
cost = [5 4 3 7 2 4];
staff = [3 2 4 4 1 3];

prob = struct ();
prob.a = [cost; staff; 0 0 1 1 0 0];        % the third row: projects 3 and 4 exclude each other
prob.c = value;
prob.buc = [13 9 1];
prob.blx = zeros (1, 6);
prob.bux = ones (1, 6);
prob.ints.sub = 1:6;                        % all six are whole numbers: with these bounds, yes or no

[r, res] = kalvoopt ('maximize echo(0)', prob);
int = res.sol.int;

fprintf ('%s: start projects %s, worth %g\n', int.solsta, mat2str (find (int.xx' > 0.5)), int.pobjval);

% Without the whole numbers the problem is a bound on what is possible.
relaxed = struct ('KLV_IPAR_RELAX_INTEGERS', 1);
[r, bound] = kalvoopt ('maximize echo(0)', prob, relaxed);
fprintf ('no choice can be worth more than %g\n', bound.sol.bas.pobjval);
