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

## Every kind of bound, the matrix, names and integers come back as they were stated.
%!test
%! for field = {"c", "cfix", "blc", "buc", "blx", "bux"}
%!   assert (res.prob.(field{1}), prob.(field{1})(:));
%! endfor
%! assert (issparse (res.prob.a) && isequal (res.prob.a, prob.a));
%! assert (res.prob.ints.sub, [1; 3]);
%! assert (res.prob.names, struct ("name", "zwölf €", "obj", "", "con", {prob.names.con.'}, ...
%!                                 "var", {prob.names.var.'}, "barvar", [], "acc", []));
%! assert (res.prob.objsense, "minimize");
%! assert (mislocked ("kalvoopt"));        # no `clear` ends what may still run

## Dense, sparse, row, column, logical: one meaning.
%!test
%! forms = {full(prob.a), prob.c, prob.blx; prob.a, sparse(prob.c.'), sparse(prob.blx.'); ...
%!          full(prob.a), prob.c.', prob.blx.'};
%! for form = forms.'
%!   p = prob;
%!   [p.a, p.c, p.blx] = form{:};
%!   assert (solved ("prob echo(0)", p).prob, res.prob);
%! endfor
%! p = struct ("a", ones (1, 3), "c", sparse ([true; false; true]), "bux", sparse ([false; true; true]));
%! logical_form = solved ("prob echo(0)", p).prob;
%! assert ([logical_form.c, logical_form.bux], [1 0; 0 1; 1 1]);

## Statuses and keys as texts and as numbers, which tell the same items apart.
%!test
%! text_form = solved ("minimize echo(0)", rmfield (prob, "ints")).sol;
%! numbers = solved ("minimize statuskeys(1) echo(0)", rmfield (prob, "ints")).sol.bas;
%! bas = text_form.bas;
%! assert (ischar (bas.skx) && ischar (bas.prosta) && isrow (bas.prosta) && isscalar (numbers.solsta));
%! assert ({size(bas.skc), size(numbers.skx), size(text_form.itr.skn), size(text_form.itr.doty)}, ...
%!         {[3 2], [4 1], [0 2], [0 1]});
%! [~, ~, group] = unique (bas.skx, "rows");
%! assert (group(:) == group(:).', numbers.skx == numbers.skx.');
%! assert (sum (numbers.skx == 1) + sum (numbers.skc == 1), 3);        # a basis: as many as constraints

## What is returned is accepted as it is and gives the same answer.
%!test
%! first = solved (["read(" fullfile(data, "lp", "israel.mps") ") minimize param echo(0)"]);
%! again = solved ("minimize param prob echo(0)", first.prob, first.param);
%! assert (again.sol, first.sol);
%! assert (again.param, setfield (first.param, "KLV_SPAR_DATA_FILE", again.param.KLV_SPAR_DATA_FILE));
%! assert (again.prob, first.prob);
%! assert (solved ("prob echo(0)", res.prob).prob, res.prob);
%! long = struct ("KLV_SPAR_DATA_FILE", repmat ("x", 1, 3000));        # cut to what fits
%! assert (solved ("param echo(0)", [], long).param.KLV_SPAR_DATA_FILE, repmat ("x", 1, 1023));

## An infeasible problem that comes as data: its certificate, by definition.
%!test
%! p = load (fullfile (data, "lp_infeasible", "lpi_itest2.mat")).Problem;
%! bas = solved ("minimize echo(0)", struct ("a", p.A, "c", p.c, "blc", p.b, "buc", p.b, "blx", p.lo, "bux", p.hi)).sol.bas;
%! assert (bas.prosta, "PRIMAL_INFEASIBLE");
%! assert (p.A' * bas.y + bas.slx - bas.sux, zeros (size (p.lo)), 1e-8 * norm ([bas.y; bas.slx; bas.sux], Inf));
%! lower = isfinite (p.lo);
%! upper = isfinite (p.hi);
%! assert (all (bas.slx(! lower) <= 1e-8) && all (bas.sux(! upper) <= 1e-8));
%! assert (p.b' * bas.y + p.lo(lower)' * bas.slx(lower) - p.hi(upper)' * bas.sux(upper), 1, 1e-6);

## Two threads, one, two again in one session.
%!test
%! for threads = [2 1 2]
%!   file = fullfile (data, "milp", "p0033.mps");
%!   of = solved (["read(" file ") minimize info echo(0)"], [], struct ("KLV_IPAR_MAX_THREADS", threads));
%!   assert ([of.sol.int.pobjval, of.info.KLV_IINF_THREADS], [3089 threads], 1e-6);
%! endfor
