% Prints a line for each file of quadratic.py: the least seconds of three calls with its record, and the solution's status.
function quadratic_times (files)
    for k = 1:numel (files)
        prob = record_of (load (files{k}));
        best = Inf;
        for again = 1:3
            began = tic;
            [r, res] = kalvoopt ('minimize echo(0)', prob, struct ('KLV_IPAR_LOG', 0));
            seconds = toc (began);
            best = min (best, seconds);
            if seconds > 4
                break
            end
        end
        status = sprintf ('%d', r);
        if isfield (res, 'sol')
            status = res.sol.itr.solsta;
        end
        printf ('%.6f %s\n', best, status);
    end
end

function prob = record_of (data)
    [i, j, v] = find (sparse (data.A));
    [m, n] = deal (rows (data.A) - numel (data.q), numel (data.q));
    a = sparse (i, j, v, m + n, n);
    [lower, upper] = deal (full (data.l(:)), full (data.u(:)));
    lower(lower < -1e19) = -Inf;
    upper(upper > 1e19) = Inf;
    prob = struct ('a', a(1:m, :), 'c', full (data.q(:)), 'cfix', double (full (data.r)), 'blc', lower(1:m), ...
                   'buc', upper(1:m), 'blx', lower(m+1:end), 'bux', upper(m+1:end));
    [prob.qosubi, prob.qosubj, prob.qoval] = find (tril (sparse (data.P)));
end
