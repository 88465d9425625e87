% A progress function that only counts.
function stop = count_progress (handle, caller, info)
    global progress_count
    progress_count++;
    stop = 0;
end
