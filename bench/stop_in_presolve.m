% Stops at the first progress point that the engine's run reports.
function stop = stop_in_presolve (handle, caller, info)
    stop = double (caller == 3);   % KLV_CALLER_PRESOLVE
end
