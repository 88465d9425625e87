% Solves a record with objsense and prints code, seconds, iterations, further attempts, status, objective, megabytes of the
% worker, seconds of the engine and of the check.
function solve_record (prob, limit)
    began = tic;
    [r, res] = kalvoopt ([prob.objsense ' info echo(0)'], prob, struct ('KLV_IPAR_LOG', 0, 'KLV_DPAR_TIME_LIMIT', limit));
    seconds = toc (began);
    [status, objective, info] = deal ('-', NaN, res.info);
    if isfield (res, 'sol') && isfield (res.sol, 'itr')
        [status, objective] = deal (res.sol.itr.solsta, res.sol.itr.pobjval);
    end
    printf ('%d %.6f %d %d %s %.12g %.1f %.6f %.6f\n', r, seconds, info.KLV_IINF_INTPNT_ITERATIONS, info.KLV_IINF_SECOND_TRIES, ...
            status, objective, info.KLV_DINF_WORKER_MEMORY, info.KLV_DINF_TIME_INTPNT, info.KLV_DINF_TIME_CHECK);
end
