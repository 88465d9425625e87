% Stops at the first progress point of the engine, which it reports once the problem is passed to it.
function stop = stop_after_pass (begin, caller, info)
    global passed_at
    stop = double (any (caller == [3 5]));   % presolve, dual simplex
    if stop && isempty (passed_at)
        passed_at = toc (begin);
    end
end
