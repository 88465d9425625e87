## What a solve returns as data, and that it can be given back.

%!function [res, text] = solved (varargin)
%!  text = evalc ("[r, res] = kalvoopt (varargin{:});");
%!  assert (r, 0);
%!endfunction

%!shared prob, res, data
%! prob.a = sparse ([1 1 0 1; 0 1 1 0; 1 0 0 -1]);
%! prob.c = [1 2 -1 0];
%! prob.cfix = 10;
%! prob.blc = [1; -Inf; 0];
%! prob.buc = [Inf 4 0];
%! prob.blx = [0 0 -2 -Inf];
%! prob.bux = [5 Inf 3 7];
%! prob.ints.sub = [3 1];
%! prob.names = struct ("name", "zwölf €", "con", {{"eins", "", "drei"}}, "var", {{"x1", "x2", "é", "x4"}});
%! res = solved ("minimize prob echo(0)", prob);
%! data = getenv ("KALVO_TEST_DATA");

## Bounds, the matrix, names and integers come back as they were stated, dense or sparse, rows or columns.
%!test
%! dense = prob;
%! [dense.a, dense.c, dense.blx] = deal (full (prob.a), sparse (prob.c.'), sparse (prob.blx.'));
%! for p = {res.prob, solved("prob echo(0)", dense).prob}
%!   for field = {"c", "cfix", "blc", "buc", "blx", "bux"}
%!     assert (p{1}.(field{1}), prob.(field{1})(:));
%!   endfor
%!   assert (issparse (p{1}.a) && isequal (p{1}.a, prob.a));
%!   assert (p{1}.ints.sub, [1; 3]);
%!   assert (p{1}.names, struct ("name", "zwölf €", "obj", "", "con", {prob.names.con.'}, ...
%!                               "var", {prob.names.var.'}, "barvar", [], "acc", []));
%! endfor
%! p = struct ("a", ones (1, 3), "c", sparse ([true; false; true]), "bux", sparse ([false; true; true]));
%! logical_form = solved ("prob echo(0)", p).prob;
%! assert ([logical_form.c, logical_form.bux], [1 0; 0 1; 1 1]);
%! assert (mislocked ("kalvoopt"));        # no `clear` ends what may still run

## What is returned is accepted as it is and gives the same answer.
%!test
%! param = struct ("KLV_IPAR_OPTIMIZER", "KLV_OPTIMIZER_INTERIOR_POINT", "KLV_DPAR_TIME_LIMIT", 12.25);
%! first = solved (["read(" fullfile(data, "lp", "israel.mps") ") minimize param echo(0)"], [], param);
%! assert (first.param.KLV_DPAR_TIME_LIMIT, 12.25);
%! again = solved ("minimize param prob echo(0)", first.prob, first.param);
%! assert (again.sol, first.sol);
%! assert (again.param, setfield (first.param, "KLV_SPAR_DATA_FILE", again.param.KLV_SPAR_DATA_FILE));
%! assert (again.prob, first.prob);
%! assert (solved ("prob echo(0)", res.prob).prob, res.prob);

## Every class of problems comes back as the same problem, in either sense.
%!test
%! base = struct ("a", sparse ([1 2 0; 0 0 3]), "c", [1; 2; 3], "names", struct ("con", {{"eins", "zwei"}}));
%! quadratic = base;
%! [quadratic.qosubi, quadratic.qosubj, quadratic.qoval] = deal ([1 3 1 2], [3 1 1 2], [0.1 0.2 pi -1]);
%! [quadratic.qcsubk, quadratic.qcsubi, quadratic.qcsubj, quadratic.qcval] = deal ([2; 1; 2], [3; 2; 1], [1; 2; 3], [1; 2; 3]);
%! cones = base;
%! cones.cones = {struct("type", "KLV_CONE_PRIMAL_POWER", "sub", [3 1], "conepar", 0.3), struct("type", 6, "sub", 2)};
%! cones.names.cone = {"power", ""};
%! affine = base;
%! affine.f = sparse ([0 1 0; 2 0 0.1; 0 0 0; 0 3 4; 1 1 1; 0 0 0; 5 0 0; 0 0 6; 7 0 0]);
%! affine.g = [1 -0.1 0 1e300 5 6 7 8 9];
%! affine.accs = [8 3 2 1/3 2, 6 3, 12 3];
%! affine.names.acc = {"p", "", "matrix"};
%! affine.bardim = [2 3];
%! affine.barc = struct ("subj", [2 1 2], "subk", [3 1 3], "subl", [1 1 1], "val", [0.1 1 0.2]);
%! affine.bara = struct ("subi", 2, "subj", 1, "subk", 2, "subl", 1, "val", -4);
%! affine.barf = struct ("subi", [9; 1], "subj", [1; 2], "subk", [2; 3], "subl", [2; 2], "val", [1; 2]);
%! affine.names.barvar = {"X", "Y"};
%! vector = base;
%! [vector.f, vector.cones] = deal (sparse (8, 3), [0 3 5 3 2 1 3 6 2]);
%! for p = {quadratic, cones, affine, vector}
%!   for command = {"prob min echo(0)", "prob max echo(0)"}
%!     first = solved (command{1}, p{1}).prob;
%!     assert (solved (command{1}, first).prob, first);
%!   endfor
%! endfor
%! first = solved ("prob echo(0)", quadratic).prob;
%! q = accumarray ([first.qosubi first.qosubj], first.qoval, [3 3]);
%! assert (q, [pi 0 0; 0 -1 0; 0.1+0.2 0 0]);
%! first = solved ("prob echo(0)", affine).prob;
%! assert (first.f, affine.f);
%! assert (first.g, affine.g.');
%! assert (first.accs, affine.accs.');
%! assert (first.barc, struct ("subj", [1; 2], "subk", [1; 3], "subl", [1; 1], "val", [1; 0.1+0.2]));
%! assert (solved ("prob echo(0)", vector).prob.accs, [4 3 9 3 2 1 3 1 2].');

## A problem brought into conic form is accepted as it is and has the same optimum.
%!test
%! p = struct ("a", sparse ([1 1 0; 0 0 1]), "c", [-1 -1 1], "blc", [-Inf -5], "buc", [1 Inf]);
%! [p.qosubi, p.qosubj, p.qoval] = deal ([1 2 2], [1 1 2], [2 1 2]);
%! [p.qcsubk, p.qcsubi, p.qcsubj, p.qcval] = deal ([1 1], [1 2], [1 2], [2 2]);
%! p.cones = {struct("type", "KLV_CONE_QUADRATIC", "sub", [3 1 2])};
%! first = solved ("minimize echo(0)", p);
%! conic = solved ("minimize toconic prob echo(0)", p);
%! again = solved ("minimize echo(0)", conic.prob);
%! assert (isfield (conic.prob, "accs") && size (conic.prob.a, 2) == 4 && ! isfield (conic.prob, "qoval"));
%! assert ([conic.sol.itr.pobjval, again.sol.itr.pobjval], first.sol.itr.pobjval * [1 1], 1e-6);
