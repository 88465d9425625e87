% Problem files as a user meets them: refused, and warned of.

% Writes lines into f.mps of the test's folder.
function put (varargin)
    file = fopen ("f.mps", "w");
    fprintf (file, "%s\n", varargin{:});
    fclose (file);
end

% A fault: its code, file and line; nothing of the file in the result; the next call is fine.
head = {"ROWS", " N c", " L r1", "COLUMNS", "    x c 1 r1 2"};
put (head{:}, "    y r9 1", "ENDATA");
printed = evalc ("[r, res] = kalvoopt ('minimize read(f.mps)');");
assert (r, 3105);
assert (res.rmsg, "f.mps:6: unknown row \"r9\" in COLUMNS");
assert (! isempty (strfind (printed, res.rmsg)), printed);
assert (size (res.prob.a), [0 0]);
assert (! isfield (res, "sol"));
put (head{:}, "ENDATA");
assert (kalvoopt ("echo(0) minimize read(f.mps)"), 0);
