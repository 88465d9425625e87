% The help names what there is: every live parameter, and nothing that does not exist.
text = evalc ("help kalvoopt");
[r, res] = kalvoopt ("param info symbcon echo(0)");
parameters = fieldnames (res.param);
live = parameters(cellfun (@isempty, strfind (parameters, "RESERVED")));
missing = live(cellfun (@(name) isempty (strfind (text, name)), live));
assert (isempty (missing), strjoin (missing, ", "));
known = [parameters; fieldnames(res.info); fieldnames(res.symbcon)];
named = unique (regexp (text, "KLV_[A-Z]+_[A-Z_]+[A-Z]", "match"));
unknown = setdiff (named, known);
assert (isempty (unknown), strjoin (unknown, ", "));
