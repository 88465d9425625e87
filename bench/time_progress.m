% A progress function that notes the CPU time of its thread at the tenth call and `calls` calls later, and stops then.
function stop = time_progress (calls, caller, info)
    persistent count = 0
    global progress_times
    count++;
    if count == 10 || count == 10 + calls
        process = getpid ();
        status = fileread (sprintf ('/proc/%d/task/%d/schedstat', process, process));
        progress_times(end + 1) = 1e-9 * sscanf (status, '%f', 1);
    end
    stop = double (count >= 10 + calls);
end
