%!function res = solved (varargin)
%!  [r, res] = kalvoopt (varargin{:});
%!  assert (r, 0);
%!endfunction

% An infeasible problem that comes as data: its certificate, by definition.
%!test
%! data = load (fullfile (getenv ("KALVO_TEST_DATA"), "lp_infeasible", "lpi_itest2.mat")).Problem;
%! prob = struct ("a", data.A, "c", data.c, "blc", data.b, "buc", data.b, "blx", data.lo, "bux", data.hi);
%! bas = solved ("minimize echo(0)", prob).sol.bas;
%! assert (bas.prosta, "PRIMAL_INFEASIBLE");
%! leftover = prob.a' * bas.y + bas.slx - bas.sux;
%! assert (norm (leftover, Inf) <= 1e-8 * norm ([bas.y; bas.slx; bas.sux], Inf));
%! lower = isfinite (prob.blx);
%! upper = isfinite (prob.bux);
%! assert (all (bas.slx(! lower) <= 1e-8) && all (bas.sux(! upper) <= 1e-8));
%! value = prob.blc' * bas.slc - prob.buc' * bas.suc + prob.blx(lower)' * bas.slx(lower) - prob.bux(upper)' * bas.sux(upper);
%! assert (value, 1, 1e-6);

% Two threads, one, two again in one session.
%!test
%! file = fullfile (getenv ("KALVO_TEST_DATA"), "milp", "p0033.mps");
%! for threads = [2 1 2]
%!   res = solved (["read(" file ") minimize info echo(0)"], [], struct ("KLV_IPAR_MAX_THREADS", threads));
%!   assert (res.sol.int.pobjval, 3089, 1e-6);
%!   assert (res.info.KLV_IINF_THREADS, threads);
%! end

% What is returned is accepted as it is and gives the same answer.
%!test
%! file = fullfile (getenv ("KALVO_TEST_DATA"), "lp", "israel.mps");
%! first = solved (["read(" file ") minimize param echo(0)"]);
%! again = solved ("minimize param prob echo(0)", first.prob, first.param);
%! assert (again.sol, first.sol);
%! assert (again.param, setfield (first.param, "KLV_SPAR_DATA_FILE", again.param.KLV_SPAR_DATA_FILE));
%! assert (again.prob, first.prob);
