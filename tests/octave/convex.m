## Answers of convex problems that are hard to tell from wrong ones: what is called optimal is, and what is called a proof proves.

%!function [r, sol] = solved (prob, sense = "minimize")
%!  text = evalc ("[r, res] = kalvoopt ([sense, ' echo(0)'], prob);");
%!  sol = res.sol.itr;
%!endfunction

## The optimum -2/e of a rotated cone lies at (2/e^2, 1, 2/e): a step that is small beside its largest member is not small.
%!test
%! for e = [1 1e-1 1e-2 1e-3 1e-4 1e-5]
%!   prob = struct ("a", sparse (0, 3), "c", [e 0 -2], "blx", [-Inf 0 -Inf], "bux", [Inf 1 Inf]);
%!   prob.cones = {struct("type", 1, "sub", 1:3)};
%!   [r, sol] = solved (prob);
%!   assert (sol.solsta, "OPTIMAL");
%!   assert (sol.pobjval, -2 / e, 2e-6 * (1 + 2 / e));
%! endfor

## Exponentials: the first member must be exp of the third.
%!test
%! for k = [0 1 5 10 15 20 25 30]
%!   prob = struct ("a", sparse (0, 3), "c", [1 0 0], "blx", [-Inf 1 k], "bux", [Inf 1 k]);
%!   prob.cones = {struct("type", 2, "sub", 1:3)};
%!   [r, sol] = solved (prob);
%!   if (strcmp (sol.solsta, "OPTIMAL") || k <= 20)
%!     assert (sol.solsta, "OPTIMAL");
%!     assert (sol.pobjval, exp (k), 2e-6 * (1 + exp (k)));
%!   endif
%! endfor

## Feasible points far away: (1e-10, 2e10, 2) is in the cone, so that nothing proves the problem infeasible.
%!test
%! for small = [1e-10 1e-12 1e-30]
%!   prob = struct ("a", sparse (0, 3), "c", [0 1e-9 0], "blx", [0 0 2], "bux", [small Inf 2]);
%!   prob.cones = {struct("type", 1, "sub", 1:3)};
%!   [r, sol] = solved (prob);
%!   assert (! strcmp (sol.prosta, "PRIMAL_INFEASIBLE"));
%! endfor

## The multiplier of a quadratic constraint must satisfy the stationarity of x, not only that of its cone.
%!test
%! prob = struct ("a", sparse ([-5; 0]), "c", -2.5, "cfix", 0.059175, "blc", [9.375 -4.125]);
%! [prob.qcsubk, prob.qcsubi, prob.qcsubj, prob.qcval] = deal ([1 2], [1 1], [1 1], [-1 -1]);
%! [r, sol] = solved (prob);
%! assert (sol.solsta, "OPTIMAL");
%! assert ([sol.xx; sol.y(1)], [-2.5; 1], 1e-5);

## Duals of quadratic constraints, exact to rounding although the cones that engines see leave them to half the digits.
%!test
%! sphere = struct ("a", sparse (1, 3), "c", [-20/9 -20/9 -10], "cfix", 100/9 + 25, "buc", 48, "blx", [-4.5 -4.5 -5], "bux", [4.5 4.5 5]);
%! [sphere.qosubi, sphere.qosubj, sphere.qoval] = deal ([1 2 2 3], [1 1 2 3], [20 -16 20 18] / 9);
%! [sphere.qcsubk, sphere.qcsubi, sphere.qcsubj, sphere.qcval] = deal ([1 1 1], 1:3, 1:3, [2 2 2]);
%! ellipse = struct ("a", sparse ([1 1]), "c", [-3 0], "buc", 4, "blx", [-10 -10], "bux", [10 10]);
%! [ellipse.qcsubk, ellipse.qcsubi, ellipse.qcsubj, ellipse.qcval] = deal ([1 1], [1 2], [1 2], [9 1]);
%! optimum = [0.9535288568, 1 / 3 - sqrt(82) / 3];
%! for k = 1:2
%!   [r, sol] = solved ({sphere, ellipse}{k});
%!   assert ({r, sol.solsta}, {0, "OPTIMAL"});
%!   assert ([sol.pobjval sol.dobjval], optimum([k k]), 1e-9);
%! endfor

## Infeasible and unbounded problems of each class have certificates with the right multipliers and directions.
%!test
%! free = struct ("a", sparse (0, 2), "c", [1 0], "blx", [-Inf -Inf], "bux", [Inf Inf]);
%! socp = setfield (setfield (setfield (free, "blx", [-Inf 2]), "bux", [1 Inf]), "cones", {struct("type", 0, "sub", 1:2)});
%! qcqp = struct ("a", sparse ([0 0; 1 1]), "c", [1 1], "blc", [-Inf 3], "buc", [1 Inf], "qcsubk", [1 1], ...
%!                "qcsubi", 1:2, "qcsubj", 1:2, "qcval", [2 2]);
%! sdp = struct ("a", sparse (1, 0), "blc", -1, "buc", -1, "bardim", 2, ...
%!               "bara", struct ("subi", 1, "subj", 1, "subk", 1, "subl", 1, "val", 1));
%! qp = struct ("a", sparse ([1 1]), "c", [0 1], "blc", 42, "blx", [0 0], "bux", [10 10], "qosubi", 1, "qosubj", 1, "qoval", 1);
%! for prob = {socp, qcqp, sdp, qp}
%!   [r, sol] = solved (prob{1});
%!   assert ({r, sol.solsta, sol.dobjval}, {0, "PRIMAL_INFEASIBLE_CERTIFICATE", 1});
%! endfor
%! [~, sol] = solved (qcqp);
%! assert (sol.y(1) < 0 && sol.y(2) > 0);
%! sdp.blc = sdp.buc = 1;
%! sdp.barc = struct ("subj", 1, "subk", 2, "subl", 2, "val", -1);
%! socp.bux = [Inf Inf];
%! socp.c = [-1 0];
%! qp = setfield (setfield (setfield (qp, "a", sparse ([1 0])), "bux", [Inf Inf]), "c", [0 -1]);
%! qp.blc = -Inf;
%! for prob = {socp, sdp, qp}
%!   [r, sol] = solved (prob{1});
%!   assert ({r, sol.solsta, sol.pobjval}, {0, "DUAL_INFEASIBLE_CERTIFICATE", -1});
%! endfor

## Multipliers are slopes: of right-hand sides, costs and expressions, by differences of optima, for both senses.
%!test
%! h = 1e-3;
%! for sign = [1 -1]
%!   sense = {"maximize", "minimize"}{1 + (sign > 0)};
%!   plain = struct ("a", sparse ([1 1 0]), "c", sign * [1 2 1], "blc", 1, "buc", 1, "blx", [-Inf -Inf -Inf], "bux", [Inf Inf Inf]);
%!   conic = quadratic = plain;
%!   [conic.f, conic.g, conic.accs] = deal (sparse ([0 0 1; 1 0 0; 0 1 0]), [0 -1 2], [4 3]);
%!   [quadratic.qosubi, quadratic.qosubj, quadratic.qoval, quadratic.blx] = deal ([1 3], [1 3], sign * [1 2], [-Inf 0 -Inf]);
%!   value = @(p) nthargout (2, @solved, p, sense).pobjval;
%!   slope = @(change) (value (change (h)) - value (change (-h))) / (2 * h);
%!   for prob = {conic, quadratic}
%!     p = prob{1};
%!     [r, sol] = solved (p, sense);
%!     assert (sol.solsta, "OPTIMAL");
%!     assert (slope (@(t) setfield (setfield (p, "blc", 1 + t), "buc", 1 + t)), sol.y, 2e-3);
%!     for k = 1:3
%!       unit = (1:3 == k);
%!       assert (slope (@(t) setfield (p, "c", p.c + t * unit)), sol.xx(k), 2e-3);
%!       if (isfield (p, "g"))
%!         assert (slope (@(t) setfield (p, "g", p.g + t * unit)), -sol.doty(k), 2e-3);
%!       endif
%!     endfor
%!   endfor
%!   assert (slope (@(t) setfield (quadratic, "qoval", quadratic.qoval + [t 0])), sol.xx(1) ^ 2 / 2, 2e-3);
%! endfor

## Rows without a right-hand side whose terms are near 1e8: an engine's answer misses them by more than the tolerance, but little.
%!test
%! m = 4;
%! n = 8;
%! for seed = 1:12
%!   rand ("twister", seed);
%!   randn ("twister", seed);
%!   rows = round (3 * randn (m, n)) .* (rand (m, n) < 0.6);
%!   prob = struct ("a", sparse ([rows -eye(m); ones(1, n) zeros(1, m)]), "c", [round(5 * randn (1, n)) zeros(1, m)]);
%!   prob.blc = prob.buc = [zeros(m, 1); 1e7 * sum(rand (n, 1))];
%!   prob.blx = [zeros(1, n) -Inf(1, m)];
%!   prob.bux = Inf (1, n + m);
%!   [prob.qosubi, prob.qosubj, prob.qoval] = deal (1:n, 1:n, 1e-7 * (1 + rand (1, n)));
%!   evalc ("[r, res] = kalvoopt ('minimize echo(0) info', prob);");
%!   assert ({res.sol.itr.solsta, res.info.KLV_IINF_SECOND_TRIES}, {"OPTIMAL", int32(0)});
%! endfor

## What is fixed bends nothing: x1^2 + 6 x1 - 2 <= 10 with x2 = 2.
%!test
%! prob = struct ("a", sparse ([0 0]), "c", [1 0], "buc", 10, "blx", [-Inf 2], "bux", [Inf 2]);
%! [prob.qcsubk, prob.qcsubi, prob.qcsubj, prob.qcval] = deal ([1 1 1], [1 2 2], [1 1 2], [2 3 -1]);
%! [r, sol] = solved (prob);
%! assert ({sol.solsta, abs(sol.pobjval + 3 + sqrt (21)) < 1e-6}, {"OPTIMAL", true});

## What was proved is proved when it is given back, and its values stay.
%!test
%! free = struct ("a", sparse ([1 1]), "c", [1 2], "blc", 1, "blx", [0 0], "bux", [Inf Inf]);
%! [qp, qcqp] = deal (free);
%! [qp.qosubi, qp.qosubj, qp.qoval] = deal ([1 2 2], [1 1 2], [2 1 2]);
%! [qcqp.blc, qcqp.buc, qcqp.blx, qcqp.a, qcqp.qcsubk, qcqp.qcsubi, qcqp.qcsubj, qcqp.qcval] = ...
%!   deal (-Inf, -1, [-Inf -Inf], sparse ([1 0]), [1 1], 1:2, 1:2, [2 2]);
%! sdp = struct ("a", sparse (1, 0), "c", zeros (1, 0), "blc", 1, "buc", 1, "bardim", [2 1], ...
%!               "bara", struct ("subi", 1, "subj", 1, "subk", 2, "subl", 1, "val", 0.5), ...
%!               "barc", struct ("subj", [1 1 2], "subk", [1 2 1], "subl", [1 2 1], "val", [1 1 1]));
%! wrong = setfield (setfield (sdp, "blc", -1), "buc", -1);
%! wrong.bara.subk = 1;
%! endless = sdp;
%! endless.barc.val = [-1 -1 1];
%! cases = {qp, "OPTIMAL"; setfield(qp, "bux", [0.2 0.2]), "PRIMAL_INFEASIBLE_CERTIFICATE"; qcqp, "PRIMAL_INFEASIBLE_CERTIFICATE"; ...
%!          sdp, "OPTIMAL"; wrong, "PRIMAL_INFEASIBLE_CERTIFICATE"; endless, "DUAL_INFEASIBLE_CERTIFICATE"};
%! for k = 1:rows (cases)
%!   prob = cases{k, 1};
%!   [r, sol] = solved (prob);
%!   assert (sol.solsta, cases{k, 2});
%!   prob.sol.itr = sol;
%!   text = evalc ("[r, res] = kalvoopt ('echo(0)', prob);");
%!   assert (rmfield (res.sol.itr, {"skc", "skx", "skn"}), rmfield (sol, {"skc", "skx", "skn"}), 1e-12);
%! endfor
