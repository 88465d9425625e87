## What a solve returns as data, and that it can be given back.

%!shared prob, res
%! prob.a = sparse ([1 1 0 1; 0 1 1 0; 1 0 0 -1]);
%! prob.c = [1 2 -1 0];
%! prob.cfix = 10;
%! prob.blc = [1; -Inf; 0];
%! prob.buc = [Inf 4 0];
%! prob.blx = [0 0 -2 -Inf];
%! prob.bux = [5 Inf 3 7];
%! prob.ints.sub = [3 1];
%! prob.names = struct ("name", "zwölf €", "con", {{"eins", "", "drei"}}, "var", {{"x1", "x2", "é", "x4"}});
%! [r, res] = kalvoopt ("minimize prob echo(0)", prob);
%! assert (r, 0);

## Every kind of bound, the matrix, names and integers come back as they were stated.
%!test
%! assert (fieldnames (res.prob).', {"c","cfix","a","blc","buc","blx","bux","ints","names","objsense"});
%! assert (issparse (res.prob.a));
%! assert (res.prob.a, prob.a);
%! assert (res.prob.c, prob.c.');
%! assert (res.prob.cfix, 10);
%! for field = {"blc", "buc", "blx", "bux"}
%!   assert (res.prob.(field{1}), prob.(field{1})(:));
%! endfor
%! assert (res.prob.ints.sub, [1; 3]);
%! assert (fieldnames (res.prob.names).', {"name","obj","con","var","barvar","acc"});
%! assert (res.prob.names.name, prob.names.name);
%! assert (res.prob.names.obj, "");
%! assert (res.prob.names.con, prob.names.con.');
%! assert (res.prob.names.var, prob.names.var.');
%! assert (res.prob.names.barvar, []);
%! assert (res.prob.objsense, "minimize");

## Given back, it is the same problem, also when it is read from the record a second time.
%!test
%! [r, again] = kalvoopt ("minimize prob echo(0)", res.prob);
%! assert (r, 0);
%! assert (isequal (again.prob, res.prob));
%! assert (again.sol.int.pobjval, res.sol.int.pobjval, 1e-9);

## Dense, sparse, row, column, logical: one meaning.
%!test
%! forms = {full(prob.a), prob.c, prob.blx; prob.a, sparse(prob.c.'), sparse(prob.blx.'); ...
%!          full(prob.a), prob.c.', prob.blx.'};
%! for form = forms.'
%!   p = prob;
%!   [p.a, p.c, p.blx] = form{:};
%!   [r, same] = kalvoopt ("prob echo(0)", p);
%!   assert (r, 0);
%!   assert (isequal (same.prob, res.prob));
%! endfor
%! p = struct ("a", ones (1, 3), "c", sparse ([true; false; true]), "bux", sparse ([false; true; true]));
%! [r, logical_form] = kalvoopt ("prob echo(0)", p);
%! assert (r, 0);
%! assert (logical_form.prob.c, [1; 0; 1]);
%! assert (logical_form.prob.bux, [0; 1; 1]);

## Statuses and keys as texts and as numbers.
%!test
%! p = rmfield (prob, "ints");
%! [r, text_form] = kalvoopt ("minimize echo(0)", p);
%! [r, number_form] = kalvoopt ("minimize statuskeys(1) echo(0)", p);
%! bas = text_form.sol.bas;
%! assert (ischar (bas.skc) && isequal (size (bas.skc), [3 2]));
%! assert (ischar (bas.skx) && isequal (size (bas.skx), [4 2]));
%! assert (ischar (bas.prosta) && isrow (bas.prosta) && ischar (bas.solsta));
%! numbers = number_form.sol.bas;
%! assert (isa (numbers.skx, "double") && isequal (size (numbers.skx), [4 1]));
%! assert (isscalar (numbers.prosta) && isscalar (numbers.solsta));
%! for i = 1:4
%!   for j = 1:4        # the two forms tell the same items apart
%!     assert (isequal (bas.skx(i,:), bas.skx(j,:)), numbers.skx(i) == numbers.skx(j));
%!   endfor
%! endfor
%! assert (sum (numbers.skx == 1) + sum (numbers.skc == 1), 3);        # a basis: as many as constraints
%! assert (size (text_form.sol.itr.skn), [0 2]);
%! assert (size (text_form.sol.itr.doty), [0 1]);
