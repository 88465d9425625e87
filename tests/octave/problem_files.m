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

% Each way of reading a line that other programs understand differently is warned of, in the words of the help.
help_text = regexprep (evalc ("help kalvoopt"), '\s+', " ");
rows_of = {"ROWS", " N c", " L r1", " N f"};
int = {"    M 'MARKER' 'INTORG'", "    x c 1", "    M 'MARKER' 'INTEND'"};
traditions = {[head(1:4), int, {"ENDATA"}]
              [head, {"BOUNDS", " UP B x -1", "ENDATA"}]
              [head, {"BOUNDS", " MI B x", "ENDATA"}]
              [head, {"RHS", "    RHS c 5", "ENDATA"}]
              [head, {"RANGES", "    R r1 -5", "ENDATA"}]
              [rows_of, head(4:5), {"ENDATA"}]
              [rows_of, head(4:5), {"RHS", "    RHS f 5", "ENDATA"}]
              [head(1:4), int(1:2), {"ENDATA"}]
              [head, {"BOUNDS", " UP B x 1", " UP C x 2", "ENDATA"}]
              [head, {"BOUNDS", " UP B x 1e30", "ENDATA"}]
              {"ROWS", " L r1", "COLUMNS", "    x r1 2", "ENDATA"}
              {"Min", " x + x", "st", "End"}
              {"Min", " x", "st", "Bounds", " x <= 3", "Binaries", " x", "End"}};
seen = {};
for i = 1:rows (traditions)
    put (traditions{i}{:});
    formats = {"KLV_FILE_BY_EXTENSION", "KLV_FILE_LP"};
    param.KLV_IPAR_FILE_FORMAT = formats{1 + strcmp (traditions{i}{1}, "Min")};
    printed = evalc ("assert (kalvoopt ('read(f.mps)', [], param), 0);");
    warnings = regexp (printed, 'Warning: f.mps:\d+: (.*?) \("', "tokens");
    assert (! isempty (warnings), printed);
    for text = [warnings{:}]
        assert (! isempty (strfind (help_text, text{1})), text{1});
        seen = union (seen, text);
    end
end
assert (numel (seen), rows (traditions));
