% KALVOOPT  Solve linear, quadratic, conic, semidefinite and mixed-integer linear optimisation problems.
%
%   [r, res] = kalvoopt (cmd, prob, param, callback, optserver)
%
%   states a problem as data (prob) or reads it from a file, does what the words in cmd ask for, and returns the
%   response code r (0: done) and a record res with solutions, the problem, parameters and information. All inputs and
%   outputs may be left off from the end. Ctrl-C stops a run; what was found by then is returned.
%
%   THE PROBLEM
%
%       minimise or maximise    c'*x + cfix
%       subject to              blc <= a*x <= buc        m constraints
%                               blx <=  x  <= bux        n variables
%                               x(j) a whole number      for j in ints.sub
%
%       Convex problems have quadratic terms, cones and semidefinite matrices, too: see below.
%
%   EXAMPLE
%
%       prob.a   = sparse ([1 2; 3 1]);
%       prob.c   = [1 1];
%       prob.blc = [4 3];
%       prob.blx = [0 0];
%       [r, res] = kalvoopt ('minimize', prob);
%       res.sol.bas.xx              % the solution: 0.4, 1.8
%       res.sol.bas.y               % its duals: what a constraint's bound is worth
%
%   More in the folder examples beside this file: small_lp, small_integer, problem_file, second_solve,
%   progress_function, log_function, parameters, infeasible, replay; portfolio, least_squares, logistic_regression,
%   geometric_programme, max_cut, matrix_completion, truss; and coming_from, for users of other solvers.
%
%   COMMAND (cmd): words separated by blanks, in any order
%
%       minimize, maximize   solve in that sense                    min, max       set the sense only
%       read(file)           read the problem from a file instead of prob; returns res.prob
%       write(file)          write the problem to a file            prob           return the problem: res.prob
%       param                return all parameters: res.param       info           return figures of the run: res.info
%       symbcon              return the names of values: res.symbcon
%       version              return the version: res.version        anapro         print an analysis of the problem
%       echo(n)              what is printed: 0 errors of the call only, 1 and the code of a failure, 2 warnings and
%                            errors, 3 (default) the log, 4 everything, above 5 also each parameter that is set
%       log(file)            everything that the solver says goes to this file, too
%       statuskeys(n)        0 (default): statuses and keys as text, 1: as numbers
%       toconic              quadratic terms become affine conic constraints, and cones of variables with them, before solving;
%                            a constraint keeps its place, free; the objective's terms become a new last variable
%       primalrepair         move bounds as little as makes the problem feasible (prob.primalrepair)
%       debug(n), nokeepenv, use_matlab_calloc                      help to find faults in kalvoopt itself
%
%       Without read, write, minimize or maximize the problem is only checked. File names may hold blanks, but no ")".
%
%   PROBLEM RECORD (prob): a structure; every field but a is optional
%
%       a         m x n real double matrix, sparse or full. Its size states m and n, also when it has no entries:
%                 sparse (0, 5) states five variables without constraints.
%       c         n costs                                           absent or empty: 0
%       cfix      constant term of the objective                    absent: 0
%       blc, buc  m bounds of the constraints                       absent or empty: none
%       blx, bux  n bounds of the variables                         absent or empty: none, so x may be negative!
%                 Rows or columns; -Inf, Inf and NaN mean no bound. A sparse n x 1 column (costs, too) means its zeros:
%                 bux = sparse (n, 1) is an upper bound of 0.
%       ints      structure with sub: the indices (from 1) of the variables that are whole numbers
%       names     structure with any of name, obj (text), con, var (cells of m and n texts)
%       primalrepair  structure with weights wlc, wuc (m), wlx, wux (n) of the bounds blc, buc, blx, bux, or []. The weighted sum
%                 of movements is minimised: absent 1, 0 moves at no cost, a negative one forbids to move; 3207: impossible
%       objsense  in res.prob only: the sense comes from cmd or the file
%
%       sol     solutions to start from: res.sol of another call, or any part of that. The simplex methods start from bas.skc
%               and bas.skx (a basis), else from xx (and y) of bas or itr; the integer search from int.xx, with NaN for
%               unknown values. A bad start costs time, never the answer. Without "minimize" or "maximize" res.sol has the
%               given values, with statuses computed again: certificates stay certificates, INTEGER_OPTIMAL becomes
%               PRIMAL_FEASIBLE.
%
%   QUADRATIC, CONIC AND SEMIDEFINITE TERMS
%
%       Convex problems are solved by interior-point methods; the answer is in res.sol.itr. Quadratic terms that are not convex
%       are refused with 3206, and integer variables together with any of these with 3013.
%
%       minimise or maximise    c'*x + x'*Q*x/2 + sum <Cj, Xj> + cfix
%       subject to              blc(i) <= a(i,:)*x + x'*Qi*x/2 + sum <Aij, Xj> <= buc(i)
%                               rows of (f*x + sum <Fkj, Xj> + g) in a domain each
%                               variables x in cones;  Xj symmetric, positive semidefinite
%
%       qosubi, qosubj, qoval          entries (qosubi(k), qosubj(k)) = qoval(k) of the symmetric matrix Q, each given in one
%                                      triangle, either one; entries that are given several times add up
%       qcsubk, qcsubi, qcsubj, qcval  the same for the matrix of constraint qcsubk(k)
%       f, g      affine expressions f*x + g: f sparse with n columns, g a full vector of as many entries as f has rows
%                 (absent: 0). Not together with qoval or qcval
%       accs      the domains of consecutive expressions: type, size, type, size ...; for types 8 and 9 type, size, number of
%                 exponents and the exponents. All expressions must be used; an empty accs leaves all of them without
%                 a constraint. For x1 ... xn in their order:
%                    0 free                      1 zero                     2 nonnegative         3 nonpositive
%                    4 quadratic                 x1 >= norm (x2 ... xn)
%                    5 rotated quadratic         2 x1 x2 >= norm (x3 ... xn)^2, x1, x2 >= 0
%                    6 primal exponential, n = 3 x1 >= x2 exp (x3 / x2), x2 >= 0               7 its dual
%                    8 primal power              prod xi^(ai / sum a) >= norm (the others)     9 its dual
%                   10 primal geometric mean     (x1 ... xn-1)^(1 / (n-1)) >= abs (xn)        11 its dual
%                   12 positive semidefinite     lower triangle by columns, entries off the diagonal times sqrt (2)
%       cones     with f, in place of accs: type, size ... with the types 0 quadratic, 1 rotated quadratic, 2 and 3 primal
%                 and dual exponential, 4 and 5 primal and dual power (type, size, 2, two exponents), 6 zero.
%                 Without f, cones of variables: a structure with type (these numbers), sub (all members, one cone after
%                 the other), subptr (where each cone begins in sub) and perhaps conepar; or a cell of structures with type
%                 (a number, or a name: KLV_CONE_QUADRATIC, _ROTATED_QUADRATIC, _PRIMAL_EXPONENTIAL, ...), sub and perhaps
%                 conepar: a of x1^a x2^(1-a) in a power cone. A variable is in one cone at most
%       bardim    orders of the matrices Xj; without it barc, bara and barf are ignored
%       barc, bara, barf  structures with subj, subk, subl, val: entry (subk(t), subl(t)) of the symmetric matrix of Xj,
%                 j = subj(t), is val(t); given in the lower triangle only. barc: the matrices Cj of the objective. bara and
%                 barf also have subi: the constraint, or the row of f
%
%       names may also have cone, acc and barvar. res.prob has accs in place of a vector cones, and only rows of f that are in a
%       domain.
%
%       Q is positive semidefinite when minimising, negative when maximising; Qi is positive semidefinite where only buc(i) exists,
%       negative where only blc(i) does. In sol.itr, xc and pobjval have all terms; doty has a dual for each row of f that is in
%       a domain, snx one for each variable, skn a key for each cone of variables (BA inside, UP on its surface, SU at its apex);
%       barx and bars are the lower triangles of all Xj and of their duals by columns, not scaled:
%
%          c + Q*x - sum y(i)*(a(i,:)' + Qi*x) - f'*doty = slx - sux + snx,    Cj - sum y(i)*Aij - sum doty(k)*Fkj = barsj
%          dobjval = cfix + blc'*slc - buc'*suc + blx'*slx - bux'*sux - g'*doty - x'*Q*x/2 + sum y(i)*x'*Qi*x/2
%
%       Minimising, doty and snx are in the dual cones and all barsj positive semidefinite; maximising, their negatives are.
%       A certificate of infeasibility has the same without c, Q, Cj and cfix, and dobjval 1 (-1); its xx is 0, or the point in the
%       terms of Qi. A direction xx, barx of an unbounded problem stays in all cones, and Q*xx and Qi*xx are 0.
%
%       prob = struct ('a', sparse (0, 2), 'c', [-3 0]);                    % x1^2 + x1*x2 + x2^2 - 3*x1
%       [prob.qosubi, prob.qosubj, prob.qoval] = find (tril ([2 1; 1 2]));
%       [r, res] = kalvoopt ('minimize', prob);                             % res.sol.itr.xx: 2, -1
%
%       prob = struct ('a', sparse ([1 1 0]), 'c', [0 0 1], 'blc', 4);      % x1 + x2 >= 4, x3 >= norm ([x1 x2])
%       prob.f = sparse ([0 0 1; 1 0 0; 0 1 0]);
%       prob.accs = [4 3];
%       [r, res] = kalvoopt ('minimize', prob);                             % res.sol.itr.xx: 2, 2, 2.828427
%
%       prob = struct ('a', sparse (1, 0), 'blc', 1, 'bardim', 2);          % X11 + X22, 2*X21 >= 1
%       prob.barc = struct ('subj', [1 1], 'subk', [1 2], 'subl', [1 2], 'val', [1 1]);
%       prob.bara = struct ('subi', 1, 'subj', 1, 'subk', 2, 'subl', 1, 'val', 1);
%       [r, res] = kalvoopt ('minimize', prob);                             % res.sol.itr.barx: 0.5, 0.5, 0.5
%
%       docs/conic.md has an example of each class.
%
%       prisen and duasen are refused unless they are empty. Other fields are ignored.
%
%   RESULT (res)
%
%       rcode, rcodestr, rmsg   the response code (as r), its name, and the last message of the solver
%       sol                     a structure with the solutions there are:
%                                 bas  a basic solution (simplex)
%                                 itr  an interior solution (interior point; the same as bas where simplex was first);
%                                      the only one of a quadratic, conic or semidefinite problem
%                                 int  the solution of a problem with whole numbers
%       prob, param, info, version, symbcon    as asked for; prob and param are accepted as inputs as they are
%
%       Each solution has
%       solsta    what it is, by residuals computed on the problem as you stated it:
%                 OPTIMAL, INTEGER_OPTIMAL (within the gap parameters), FEASIBLE (primal and dual feasible, gap too large),
%                 PRIMAL_FEASIBLE, DUAL_FEASIBLE, PRIMAL_INFEASIBLE_CERTIFICATE, DUAL_INFEASIBLE_CERTIFICATE, UNKNOWN
%       prosta    what is known of the problem:
%                 FEASIBLE (primal and dual), PRIMAL_FEASIBLE, DUAL_FEASIBLE, PRIMAL_INFEASIBLE, DUAL_INFEASIBLE (unbounded,
%                 if it is feasible), BOTH_INFEASIBLE, INFEASIBLE_BY_SEARCH (an integer search found no point; not
%                 certified), UNKNOWN
%       xx, xc    variables (n x 1) and constraint activities (m x 1)
%       skx, skc  a key for each, two characters a row:
%                 UN unknown, BA basic, SU superbasic (between its bounds, not basic), LO at its lower bound, UP at its
%                 upper bound, FI fixed, IN infeasible
%       pobjval   the objective; for a direction without cfix
%       and but for int
%       y         duals of the constraints (m x 1): the change of the optimum for one more unit of the bound
%       slc, suc, slx, sux   duals by bound: y = slc - suc, c - a'*y = slx - sux; minimising, all are >= 0; maximising,
%                 all signs are reversed
%       dobjval   the bound on the optimum that the duals prove; for a certificate its value without cfix
%       itr also has skn, snx, barx, bars, doty for conic and semidefinite terms; empty or 0 where nothing is known.
%
%       Infeasible problem: y, slc, suc, slx, sux hold a certificate: a'*y + slx - sux = 0 and
%       blc'*slc - buc'*suc + blx'*slx - bux'*sux = 1 over the bounds that exist (-1 when maximising), which no x can
%       meet. Unbounded problem: xx holds a direction that improves the objective by 1 for ever. Both are answers: r is 0.
%
%   RESPONSE CODES (r)
%
%       0         done: solved, or proved infeasible or unbounded, or an integer search found no point (see prosta)
%       20001 to 20006   ended by the limit on time, iterations, nodes, solutions, objective; by numerical trouble
%       100007    stopped by Ctrl-C or by the progress function
%       1051      out of memory         1200, 1201   an input is wrong; the message names it
%       3013      this version cannot do it; the message says what
%       3206      quadratic terms that are not convex; the message names the objective or the constraint
%       3205      the program kalvo-worker is missing or does not fit: copy the whole folder, or set KLV_IPAR_WORKER to 0
%       others    failures of the solver; res.rcodestr names them, res.rmsg says more
%       From 9999 on the run counts as finished: res.sol holds what was found, with the status that it deserves.
%
%   PARAMETERS (param): a structure, field names are parameter names
%
%       name                              default                  meaning
%       KLV_IPAR_OPTIMIZER                KLV_OPTIMIZER_AUTOMATIC  or _DUAL_SIMPLEX, _PRIMAL_SIMPLEX, _INTERIOR_POINT,
%                                                                  _CONIC, _MIXED_INTEGER; of linear problems: quadratic,
%                                                                  conic and semidefinite ones get interior point
%       KLV_IPAR_INTPNT_BASIS             KLV_ON                   an interior solution is also turned into a basic one
%       KLV_IPAR_RELAX_INTEGERS           KLV_OFF                  KLV_ON: variables need not be whole numbers
%       KLV_DPAR_TIME_LIMIT               -1                       seconds; -1: none
%       KLV_DPAR_MEMORY_LIMIT             -1                       megabytes for the optimisers; -1: none
%       KLV_IPAR_SIMPLEX_ITERATION_LIMIT  -1                       -1: none
%       KLV_IPAR_INTPNT_ITERATION_LIMIT   -1                       -1: the library's own
%       KLV_IPAR_MIP_NODE_LIMIT           -1                       -1: none
%       KLV_IPAR_MIP_SOLUTION_LIMIT       -1                       improving solutions; -1: none
%       KLV_DPAR_OBJECTIVE_LIMIT          Inf                      a run ends when its objective passes it
%       KLV_DPAR_PRIMAL_TOLERANCE         1e-06                    relative violation of constraints and bounds
%       KLV_DPAR_DUAL_TOLERANCE           1e-06                    relative violation by the duals
%       KLV_DPAR_GAP_TOLERANCE            1e-06                    relative difference of pobjval and dobjval
%       KLV_DPAR_INTPNT_TOLERANCE         0                        gap at which interior point ends; 0: KLV_DPAR_GAP_TOLERANCE / 100
%       KLV_DPAR_INTEGER_TOLERANCE        1e-06                    distance from a whole number
%       KLV_DPAR_MIP_ABSOLUTE_GAP         1e-06                    the integer search ends when best value and bound
%       KLV_DPAR_MIP_RELATIVE_GAP         0.0001                   are that close
%       KLV_IPAR_PRESOLVE                 KLV_PRESOLVE_AUTOMATIC   or _ON, _OFF
%       KLV_IPAR_SCALING                  KLV_SCALING_AUTOMATIC    or _OFF, _EQUILIBRATION, ...: see res.symbcon
%       KLV_IPAR_SIMPLEX_PRICING          KLV_PRICING_AUTOMATIC    or _DANTZIG, _DEVEX, _STEEPEST_EDGE
%       KLV_IPAR_INTPNT_METHOD            KLV_INTPNT_METHOD_AUTOMATIC  or _ITERATIVE, _FACTORIZATION
%       KLV_IPAR_INTPNT_FACTORIZATION     KLV_FACTORIZATION_AUTOMATIC  or _SIMPLICIAL, _SUPERNODAL: of convex problems
%       KLV_DPAR_INTPNT_REGULARIZATION    0                        added to their systems' diagonals; 0: automatic
%       KLV_DPAR_MIP_HEURISTIC_EFFORT     0.05                     share of the integer search for heuristics
%       KLV_IPAR_MIP_CUTS_AT_NODES        KLV_ON                   KLV_OFF: cuts at the root only
%       KLV_IPAR_MIP_SYMMETRY             KLV_ON                   symmetry is looked for and used
%       KLV_IPAR_MIP_PARALLEL             KLV_OFF                  KLV_ON: several threads search the tree
%       KLV_IPAR_WARM_START               KLV_ON                   prob.sol is where a run starts
%       KLV_IPAR_MAX_THREADS              0                        0: the library chooses; 1: runs repeat bit for bit
%       KLV_IPAR_RACE_SIZE                5000                     entries, rows and columns from which the automatic optimiser
%                                                                  runs simplex and interior point side by side
%       KLV_DPAR_RACE_DELAY               0                        seconds by which interior point begins later; Inf: never
%       KLV_IPAR_WORKER                   KLV_WORKER_AUTOMATIC     optimisers run in a process of their own (kalvo-worker, in
%                                                                  this folder), which may crash, or be ended by a stop,
%                                                                  while this session goes on; _OFF: in this process
%       KLV_SPAR_REPLAY_FILE              ''                       a JSON file that keeps what made that process crash
%       KLV_IPAR_RANDOM_SEED              0                        seed of the optimisers' random choices
%       KLV_IPAR_LOG                      2                        0 nothing, 1 summaries, 2 and progress, 3 and the
%                                                                  engine's own lines
%       KLV_IPAR_LOG_SIMPLEX              KLV_ON                   progress of the simplex methods is printed
%       KLV_IPAR_LOG_INTPNT               KLV_ON                   progress of interior point is printed
%       KLV_IPAR_LOG_MIP                  KLV_ON                   progress of the integer search is printed
%       KLV_DPAR_BOUND_INFINITY           1e+20                    bounds from there on are infinite: in files all, in
%                                                                  prob upper ones in full vectors
%       KLV_DPAR_FIXING_TOLERANCE         1e-10                    bounds that differ by at most this are one value
%       KLV_IPAR_FILE_FORMAT              KLV_FILE_BY_EXTENSION    or _FREE_MPS, _FIXED_MPS, _LP, _JSON, _CBF, _SDPA
%       KLV_SPAR_DATA_FILE                ''                       the problem file; set by read(file)
%
%       Values of integer parameters are numbers or the names of values (see res.symbcon). A name that does not exist or
%       a value out of range is an error. docs/parameters.md lists all parameters, docs/information.md the fields of
%       res.info, docs/log.md the lines of the log; docs/worker.md describes the process of optimisers. Reserved
%       parameters accept only their default.
%
%   CALLBACKS (callback): a structure with any of
%
%       log, loghandle    name of a function f (loghandle, text) that receives the log instead of the console. The
%                         banner still goes to the console (with echo(0): nowhere)
%       iter, iterhandle  name of a function stop = g (iterhandle, caller, info) that is called during a run at least
%                         every 50 ms, with the point of the computation and the record of res.info at that moment.
%                         A number other than 0, or an error, stops the run. A logical value does not: double (done).
%
%       A name needs its handle: any value, also [], which becomes the function's first argument. An empty name means no
%       function.
%
%   SERVER (optserver): a structure with host (text). Not available in this version.
%
%   PROBLEM FILES: MPS, LP, CBF, sparse SDPA and JSON, extensions .mps (.qps), .lp, .cbf, .dat-s and .json, with .gz when packed
%
%       The parameter of the file format forces one, then with any extension. A file is read as a whole or not at all: res.rmsg
%       names the line and the cause of a fault. It is written with every number to the last bit and every name as it is, or
%       not at all, and then the file that was there before stays. Items without a name are written as C1, C2, ..., R1, R2,
%       ... and OBJ. What a format cannot say is refused, as cones in MPS and
%       LP; special ordered sets, indicators and semi-continuous variables are in any.
%
%       MPS: free form has fields separated by blanks, so its names have none. Fixed form has them in the columns 2-3, 5-12,
%       15-22, 25-36, 40-47 and 50-61: names of up to 8 bytes, blanks inside allowed. read finds out which form a file has;
%       write takes free form unless only fixed form can hold the names. Sections: NAME, OBJSENSE, OBJNAME, ROWS, COLUMNS,
%       RHS, RANGES, BOUNDS (types LO, UP, FX, FR, MI, PL, BV, LI, UI) and ENDATA.
%
%       Quadratic terms in MPS: QUADOBJ (one triangle) and QMATRIX (both) hold Q of 1/2 x'Qx in the objective; QCMATRIX and a
%       row's name (both triangles) hold M of x'Mx in that row, without 1/2; QSECTION and a row's name (one triangle) hold Q of
%       1/2 x'Qx, in the objective if it is the objective's name or absent. An entry that comes twice, and one of a pair that
%       is absent or different where both triangles are asked for, are refused. write uses QUADOBJ and QCMATRIX.
%
%       LP, in small or capital letters:
%
%           \ Problem name: diet            (a comment, from "\" to the end of its line)
%           Minimize                        or Maximize
%            cost: 2 bread + 3.5 milk + 10
%           Subject To                      each constraint begins on a line of its own and may go on over more
%            energy: 90 bread + 120 milk >= 300
%            fat: -5 <= bread - 2 milk <= 40
%           Bounds                          0 and infinity where nothing is said
%            bread <= 10
%            -infinity <= milk <= 4         also x >= 1, x = 1 and x free
%           Generals                        integer variables
%            bread
%           Binaries
%           End
%
%       Quadratic terms in LP: [ 2 bread ^ 2 + 3 bread * milk ] / 2 among the terms of the objective, where "/ 2" must stand, and
%       [ 2 bread ^ 2 + 3 bread * milk ] among those of a constraint, where it must not. Numbers multiply the products as they
%       stand: this objective is bread^2 + 1.5 bread milk.
%
%       "<", "<=" and "=<" are the same. Variables stand left of the relation or between two, numbers at the other sides.
%
%       CBF (.cbf), versions 1 to 4, holds conic problems without names; CHANGE is refused. Linear cones become bounds and
%       constraints. Other cones of VAR become cones; when CON or PSDCON has any, or VAR one that cones cannot be, all become
%       affine conic constraints. Entries of PSDCON off the diagonal are multiplied by the root of 2 and rounded. An entry
%       that comes twice is refused. write makes rows of bounds other than 0, of second bounds and of cones whose variables
%       are bounded or do not follow each other: read then gives an equivalent problem. Names are refused.
%
%       Sparse SDPA (.dat-s) states min c'x with F1 x1 + F2 x2 + ... - F0 positive semidefinite, and its dual, max <F0, Y> with
%       <Fi, Y> = ci. read gives the dual: a semidefinite variable for each block, nonnegative ones for blocks that are diagonal
%       or of order 1. An infeasible problem in x is an unbounded one here. With *INTEGER it gives the problem in x. write
%       holds such duals only.
%
%       JSON holds a whole task: the problem with all names, the parameters that differ from their defaults, and the
%       solutions. To report how a run went, send such a file; kalvoopt ('read(report.json) minimize') replays the run
%       (example replay). Parameters of the call that differ from their defaults override those of the file. The run starts
%       from the file's solutions, whose statuses are computed again. Numbers and bounds are kept to the last bit, whatever
%       the bound infinity is, and names of any bytes. docs/json.md describes the format.
%
%       Programs differ in how they understand some files. kalvoopt warns of such lines (echo(2) and above), and reads:
%         an integer column between markers without any bound gets the bounds 0 and 1
%         a negative upper bound without a lower bound takes the lower bound 0 away
%         MI without an upper bound leaves the upper bound infinite
%         the right-hand side of the objective is minus its constant
%         the sign of a range of an L or G row is not looked at
%         an N row after the objective is kept as a free constraint
%         a right-hand side or range of a free row has no effect
%         an INTORG marker that no INTEND follows holds to the end of COLUMNS
%         only the first set of RHS, RANGES or BOUNDS is used
%         a bound at or beyond the bound infinity threshold is no bound
%         without an N row the objective is zero
%         terms of a variable that comes twice in an expression are added
%         a binary variable has no bound beyond 0 and 1
%         QSECTION is one triangle of Q in 1/2 x'Qx of the objective or of the row that it names
%
%   WHAT ODD INPUT DOES
%
%       input                                    outcome
%       a absent                                 1200 "prob.a not specified"
%       a not a real double matrix               1200, the message names prob.a
%       complex numbers but in a                 their real parts are read
%       NaN or Inf in a or c                     refused by the solver; res.rmsg names the entry
%       c of another length, sparse row          1200 "prob.c has wrong length"
%       bounds of another length or class        1201 (the line says 1200) "prob.blc has invalid dimension"
%       blc, blx = Inf; buc, bux = -Inf          1400, the item is named
%       buc, bux finite and above 1e20           no bound in a full vector, a bound in a sparse one. When res.prob has such
%                                                bounds, a warning says that they need
%                                                the setting KLV_DPAR_BOUND_INFINITY = Inf as an input
%       lower bound above upper bound            infeasible, with that pair as certificate; r is 0
%       cfix empty                               1200 "prob.cfix" (absent is 0)
%       ints not a structure; index out of range 1200, the item is named
%       ints.sub sparse or not a vector          ignored
%       names of another number                  1201 (the line says 1200) "prob.names.con"; unknown names: 1200
%       f, g, accs and cones that do not fit      1200, the message names the field or its entry
%       accs, cones with a size that is wrong    1200 of the solver; res.rmsg says which
%       index out of range in qosubj, qosubi     1401, 1402; in qcsubk, qcsubi, qcsubj 1404 to 1406 with index and position
%       a cone of an unknown type, a member      1271, 1204; a variable in two cones: refused by the solver
%       lists of barc, bara, barf differ         1200 "prob.barc"
%       sol not a structure                      1200 "prob.sol"; its fields of another length: named likewise
%       NaN in sol; Inf in sol                   an unknown value; refused by the solver
%       param an array of structures             ignored; not a structure: 1200 "param"
%       2.7 for an integer parameter             2
%       progress function that returns true      the run goes on: only numbers stop it
%       callback that fails                      progress function: the run stops, 100007; log function: ignored
%       prob together with read                  prob is ignored but for prob.sol and prob.primalrepair
%       file missing, a folder or a pipe         3103, res.rmsg says why; an unknown extension: 3102
%       fault in a file; unsupported section     3105, 3106, the line is named
%       names or bounds no file can hold         3108, the item is named; disk full: 3107
%       unknown word in cmd                      1200, nothing is done, res is not set
%       "..." in MATLAB (a string object)        not a text: 1200 or 1201; write '...'
%
%   See also: kalvoplot, glpk
