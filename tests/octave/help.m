% The help names what there is, with the defaults that it has, and its example does what it says.
text = evalc ("help kalvoopt");
[r, res] = kalvoopt ("param info symbcon echo(0)");

% The parameters of daily use with their defaults, and no name that does not exist.
parameters = fieldnames (res.param);
listed = regexp (text, '^ *(KLV_[DIS]PAR_\w+) +(\S+)', "tokens", "lineanchors");
listed = vertcat (listed{:});
assert (rows (listed) >= 30);
assert (isempty (setdiff (listed(:, 1), parameters)), strjoin (setdiff (listed(:, 1), parameters), ", "));
for i = 1:rows (listed)
    default = res.param.(listed{i, 1});
    if ischar (default)
        assert (isequal (strrep (listed{i, 2}, "''", ""), default), listed{i, 1});
    else
        assert (isequal (str2double (listed{i, 2}), default), listed{i, 1});
    end
end
known = [parameters; fieldnames(res.info); fieldnames(res.symbcon)];
named = unique (regexp (text, "KLV_[A-Z]+_[A-Z_]+[A-Z]", "match"));
unknown = setdiff (named, known);
assert (isempty (unknown), strjoin (unknown, ", "));

% The example, line by line as it stands.
example = regexp (text, '\n *EXAMPLE\n(.*?)\n *More in the folder', "tokens", "once"){1};
evalc (example);
assert (r, 0);
assert (res.sol.bas.xx, [0.4; 1.8], 1e-12);
assert (! isempty (strfind (example, "0.4, 1.8")));

% Those of quadratic, conic and semidefinite problems, with the values in their comments.
section = regexp (text, '\n *QUADRATIC, CONIC AND SEMIDEFINITE TERMS\n(.*?)\n *docs/conic.md', "tokens", "once"){1};
examples = regexp (section, '( *prob = struct.*?)% (res\.sol\.itr\.\w+): ([^\n]*)', "tokens");
assert (numel (examples), 3);
for i = 1:numel (examples)
    evalc (examples{i}{1});
    assert (r, 0);
    assert (eval (examples{i}{2}), str2num (examples{i}{3})', 1e-4);
end
