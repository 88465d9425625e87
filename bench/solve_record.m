% Solves a record and prints code, seconds, megabytes of the worker, iterations, further attempts, status and objective.
function solve_record (sense, prob, limit)
    began = tic;
    [r, res] = kalvoopt ([sense ' info echo(0)'], prob, struct ('KLV_IPAR_LOG', 0, 'KLV_DPAR_TIME_LIMIT', limit));
    seconds = toc (began);
    [status, objective, info] = deal ('-', NaN, res.info);
    if isfield (res, 'sol') && isfield (res.sol, 'itr')
        [status, objective] = deal (res.sol.itr.solsta, res.sol.itr.pobjval);
    end
    printf ('%d %.6f %.1f %d %d %s %.12g\n', r, seconds, info.KLV_DINF_WORKER_MEMORY, info.KLV_IINF_INTPNT_ITERATIONS, ...
            info.KLV_IINF_SECOND_TRIES, status, objective);
end
