% A problem file: read it, look at it, change it, solve it, write it.

folder = fileparts (mfilename ('fullpath'));
file = fullfile (folder, 'diet.mps');

% "read" returns the problem as data; without "minimize" nothing is solved.
[r, res] = kalvoopt (['read(' file ') echo(0)']);
prob = res.prob;
fprintf ('%s: %d constraints, %d variables, to %s\n', prob.names.name, size (prob.a, 1), size (prob.a, 2), prob.objsense);

% The problem is solved straight from the file.
[r, res] = kalvoopt (['read(' file ') minimize echo(0)']);
fprintf ('as it is: %g\n', res.sol.bas.pobjval);

% The problem is changed as data: at least one egg. Names and everything else stay.
prob.blx(2) = 1;
[r, res] = kalvoopt ('minimize echo(0)', prob);
fprintf ('with at least 1 of %s: %g\n', prob.names.var{2}, res.sol.bas.pobjval);

% The changed problem is written. A write that fails leaves an existing file as it was.
copy = [tempname() '.mps'];
r = kalvoopt (['min write(' copy ') echo(0)'], prob);
[r, again] = kalvoopt (['read(' copy ') minimize echo(0)']);
fprintf ('from the copy: %g\n', again.sol.bas.pobjval);
delete (copy);
