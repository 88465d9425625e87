## Repair against the elastic problem that a user would write, with rows of its own for each bound; and the answer afterwards.

%!function varargout = quietly (varargin)
%!  [text, varargout{1:nargout}] = evalc ("kalvoopt (varargin{:})");
%!endfunction

## Bounds b: a x + p >= blc, a x - q <= buc, x + s >= blx, x - t <= bux, p, q, s, t >= 0; weights w below 0: no column.
%!function value = elastic_optimum (prob, w)
%!  [m, n] = size (prob.a);
%!  e = rmfield (prob, intersect (fieldnames (prob), {"qosubi", "qosubj", "qoval", "primalrepair"}));
%!  signs = [ones(m, 1); -ones(m, 1); ones(n, 1); -ones(n, 1)];
%!  weights = [w.wlc(:); w.wuc(:); w.wlx(:); w.wux(:)];
%!  soft = find (weights >= 0);
%!  slack = sparse (soft, 1:numel (soft), signs(soft), 2 * (m + n), numel (soft));
%!  e.a = [[prob.a; prob.a; speye(n); speye(n)], slack];
%!  e.c = [zeros(n, 1); weights(soft)];
%!  e.blc = [prob.blc(:); -Inf(m, 1); prob.blx(:); -Inf(n, 1)];
%!  e.buc = [Inf(m, 1); prob.buc(:); Inf(n, 1); prob.bux(:)];
%!  e.blx = [-Inf(n, 1); zeros(numel (soft), 1)];
%!  e.bux = Inf (n + numel (soft), 1);
%!  if (isfield (prob, "qcsubk"))    % of rows with upper bounds
%!    e.qcsubk = prob.qcsubk + m;
%!  endif
%!  if (isfield (prob, "bara"))
%!    b = prob.bara;
%!    e.bara = struct ("subi", [b.subi, b.subi + m], "subj", [b.subj, b.subj], "subk", [b.subk, b.subk], ...
%!                     "subl", [b.subl, b.subl], "val", [b.val, b.val]);
%!    e = rmfield (e, "barc");
%!  endif
%!  param.KLV_DPAR_MIP_RELATIVE_GAP = 1e-7;
%!  [r, res] = quietly ("minimize echo(0)", e, param);
%!  names = fieldnames (res.sol);
%!  sol = res.sol.(names{end});
%!  assert (r, 0);
%!  assert (any (strcmp (sol.solsta, {"OPTIMAL", "INTEGER_OPTIMAL"})));
%!  value = sol.pobjval;
%!endfunction

## A random problem that is infeasible by bounds that move: five rows, of which two ask for the opposite of two others.
%!function prob = infeasible (kind)
%!  n = 6;  m = 5;
%!  x = round (4 * randn (n, 1));
%!  prob.a = sparse (round (3 * randn (m, n)) .* (rand (m, n) < 0.7));
%!  prob.c = ones (n, 1);
%!  prob.blx = -10 * ones (n, 1);
%!  prob.bux = 10 * ones (n, 1);
%!  prob.blx(1) = 12;                  % crossed
%!  prob.blc = prob.a * x - 1;
%!  prob.buc = prob.a * x + 3;
%!  prob.a(2,:) = -prob.a(1,:);
%!  prob.blc(2) = -prob.blc(1) + 2 + rand;
%!  prob.buc(2) = prob.blc(2);         % fixed
%!  switch (kind)
%!    case "qp"
%!      prob.qosubi = 1:n;  prob.qosubj = 1:n;  prob.qoval = ones (1, n);
%!    case "qcqp"
%!      prob.qcsubk = 3 * ones (1, n);  prob.qcsubi = 1:n;  prob.qcsubj = 1:n;  prob.qcval = 2 * ones (1, n);
%!      prob.blc(3) = -Inf;  prob.buc(3) = -1 - rand;
%!    case "soc"
%!      prob.cones = {struct("type", 0, "sub", [4 2 3])};  prob.bux(4) = 1;  prob.blx(2) = 3 + rand;
%!    case "exp"
%!      prob.cones = {struct("type", 2, "sub", [4 5 6])};
%!      prob.blx(5) = 1;  prob.bux(4) = 1;  prob.blx(6) = 1 + rand;  prob.bux(5) = 2;
%!    case "pow"
%!      prob.cones = {struct("type", 4, "conepar", 0.3, "sub", [4 5 6])};
%!      prob.bux(4:5) = 1;  prob.blx(6) = 2 + rand;
%!    case "sdp"
%!      prob.bardim = 2;
%!      prob.barc = struct ("subj", [1 1], "subk", [1 2], "subl", [1 2], "val", [1 1]);
%!      prob.bara = struct ("subi", [4 5 5], "subj", [1 1 1], "subk", [2 1 2], "subl", [1 1 2], "val", [1 1 1]);
%!      prob.a(4:5,:) = 0;  prob.blc(4:5) = [3 0];  prob.buc(4:5) = [4 1 + rand];
%!    case "milp"
%!      prob.ints.sub = 1:3;
%!  endswitch
%!endfunction

%!test
%! rand ("state", 1);  randn ("state", 1);
%! rounds = str2double (getenv ("KALVO_REPAIR_ROUNDS"));
%! if (isnan (rounds))
%!   rounds = 3;
%! endif
%! wrong = 0;
%! for kind = {"lp", "qp", "qcqp", "soc", "exp", "pow", "sdp", "milp"}
%!   failed = 0;
%!   for round = 1:rounds
%!     prob = infeasible (kind{1});
%!     w = struct ("wlc", rand (5, 1) + 0.1, "wuc", rand (5, 1) + 0.1, "wlx", rand (6, 1) + 0.1, "wux", rand (6, 1) + 0.1);
%!     w.wux(3) = -1;
%!     value = elastic_optimum (prob, w);
%!     prob.primalrepair = w;
%!     [r, res] = quietly ("minimize echo(0) info primalrepair", prob);
%!     names = fieldnames (res.sol);
%!     sol = res.sol.(names{end});
%!     good = r == 0 && any (strcmp (sol.solsta, {"OPTIMAL", "INTEGER_OPTIMAL"})) ...
%!            && abs (res.info.KLV_DINF_REPAIR_SUM - value) <= 2e-5 * (1 + value) && value > 0.1;
%!     if (! good)
%!       failed++;
%!       printf ("%s %d: %d %s %.9g %.9g\n", kind{1}, round, r, sol.solsta, res.info.KLV_DINF_REPAIR_SUM, value);
%!     endif
%!   endfor
%!   printf ("%s: %d of %d wrong\n", kind{1}, failed, rounds);
%!   wrong += failed;
%! endfor
%! assert (wrong, 0);

## A schedule: two jobs of 5 and 7 hours in 10. Hours cost 3, the first job's time 1, the second one's 2.
%!test
%! prob = struct ("a", sparse ([1 0; 0 1; 1 1]), "c", [1 1], "blc", [5 7 -Inf], "buc", [Inf Inf 10], "blx", [0 0]);
%! prob.primalrepair = struct ("wlc", [1 2 1], "wuc", [1 1 3]);
%! [r, res] = quietly ("minimize primalrepair info echo(0)", prob);
%! assert (r, 0);
%! assert (res.sol.bas.xx, [3; 7]);
%! assert ([res.info.KLV_DINF_REPAIR_SUM, res.info.KLV_IINF_REPAIRED_BOUNDS], [2 1]);
%! prob.primalrepair.wlc(1) = 0;        # moves at no cost, and by no more than it has to
%! [r, res] = quietly ("minimize primalrepair info echo(0)", prob);
%! assert (res.sol.bas.xx, [3; 7]);
%! assert (res.info.KLV_DINF_REPAIR_SUM, 0);
%! prob.primalrepair.wlc = [-1 -1 -1];
%! [r, res] = quietly ("minimize primalrepair info echo(0)", prob);
%! assert (res.info.KLV_DINF_REPAIR_SUM, 6);    # the hours
%! prob.primalrepair.wuc = [-1 -1 -1];
%! [r, res] = quietly ("minimize primalrepair echo(0)", prob);
%! assert (r, 3207);
%! assert (! isfield (res, "sol"));
%! prob.primalrepair.wuc(3) = NaN;
%! [r, res] = quietly ("minimize primalrepair echo(0)", prob);
%! assert (r, 1200);
%! assert (! isempty (strfind (res.rmsg, "wuc[2]")));

## Two departments' rules: what contradicts is told by name.
%!test
%! prob = struct ("a", sparse ([1 1 0; 1 1 1; 0 0 1; 1 -1 0]), "c", [1 1 1], "blc", [60 -Inf -Inf -50], "buc", [Inf 50 20 50]);
%! prob.blx = [0 0 0];
%! prob.names.con = {"sales wants", "works can", "stock", "balance"};
%! text = evalc ("kalvoopt ('minimize', prob);");
%! assert (! isempty (strfind (text, "'sales wants') >= 60")));
%! assert (! isempty (strfind (text, "'works can') <= 50")));
%! assert (isempty (strfind (text, "'balance')")));
%! assert (! isempty (strfind (evalc ("kalvoopt ('anapro', prob);"), "'works can') <= 50")));
