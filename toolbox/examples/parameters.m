% Parameters by name: set them, list them, give them back.

prob = struct ('a', [1 2; 3 1], 'c', [1 1], 'blc', [4 3], 'blx', [0 0]);

% Values are numbers, or the library's names for numbers.
param = struct ();
param.KLV_IPAR_OPTIMIZER = 'KLV_OPTIMIZER_INTERIOR_POINT';
param.KLV_DPAR_TIME_LIMIT = 10;             % seconds
param.KLV_IPAR_MAX_THREADS = 1;
[r, res] = kalvoopt ('minimize param info symbcon echo(0)', prob, param);

fprintf ('%d parameters, %d information items, %d names for values\n', numel (fieldnames (res.param)), numel (fieldnames (res.info)), ...
         numel (fieldnames (res.symbcon)));
fprintf ('optimizer %s, primal tolerance %g\n', res.param.KLV_IPAR_OPTIMIZER, res.param.KLV_DPAR_PRIMAL_TOLERANCE);
fprintf ('solved in %d interior-point iterations and %.3f s\n', res.info.KLV_IINF_INTPNT_ITERATIONS, ...
         res.info.KLV_DINF_TIME_OPTIMIZE);

% The whole record can be given back: the same settings, the same run.
[r, again] = kalvoopt ('minimize echo(0)', prob, res.param);
fprintf ('the same answer again: %d\n', again.sol.itr.pobjval == res.sol.itr.pobjval);

% A parameter that does not exist is an error, with a message, and never ignored.
r = kalvoopt ('minimize echo(0)', prob, struct ('KLV_IPAR_OPTIMISER', 1));
