% Prints a line for each file of semidefinite.py: seconds of the processor, the largest of violations and gap, and the status.
function semidefinite_times (files)
    for k = 1:numel (files)
        [r, res] = kalvoopt (sprintf ('read(%s) echo(0)', files{k}));
        began = cputime ();
        [r, res] = kalvoopt (sprintf ('%s info echo(0)', res.prob.objsense), res.prob, struct ('KLV_IPAR_LOG', 0, 'KLV_IPAR_WORKER', 'KLV_WORKER_OFF'));
        seconds = cputime () - began;
        status = sprintf ('%d', r);
        [err, objective] = deal (NaN);
        if isfield (res, 'sol')
            status = res.sol.itr.solsta;
            info = res.info;
            err = max ([info.KLV_DINF_PRIMAL_VIOLATION, info.KLV_DINF_DUAL_VIOLATION, info.KLV_DINF_RELATIVE_GAP]);
            objective = res.sol.itr.pobjval;
        end
        printf ('%.6f %.3e %.10e %s\n', seconds, err, objective, status);
    end
end
