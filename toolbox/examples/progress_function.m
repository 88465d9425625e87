% A progress function: called during a run with the run's current figures; it can stop the run.
%
% handle is the value of "iterhandle"; caller says which phase the run is in (KLV_CALLER_... in res.symbcon); info holds every
% information item. A number other than 0 stops the run; a logical value does not.
%
% kalvoopt calls the progress function by name, so it must be on the path or in the current folder. Called without inputs, this
% function solves a problem with itself as the progress function.

function stop = progress_function (handle, caller, info)
    if nargin == 0
        solve ();
        return
    end
    fprintf ('  %5.2f s  best value %-10g bound %g\n', info.KLV_DINF_PROGRESS_TIME, ...
             info.KLV_DINF_MIP_OBJECTIVE, info.KLV_DINF_MIP_BOUND);
    stop = double (info.KLV_DINF_PROGRESS_TIME > handle.seconds);
end

function solve ()
    rand ('twister', 42);
    n = 90;
    prob = struct ();
    prob.a = round (95 * rand (6, n)) + 5;
    prob.c = round (sum (prob.a) / 6 + 20 * rand (1, n));
    prob.buc = floor (sum (prob.a, 2) / 3);
    prob.blx = zeros (n, 1);
    prob.bux = ones (n, 1);
    prob.ints.sub = 1:n;

    callback = struct ('iter', 'progress_function', 'iterhandle', struct ('seconds', 0.5));
    [r, res] = kalvoopt ('maximize echo(0)', prob, [], callback);

    % Also after a stop res.sol holds the best solution so far; its status says what was proved.
    fprintf ('%d, %s: %s, %g\n', r, res.rcodestr, res.sol.int.solsta, res.sol.int.pobjval);
end
