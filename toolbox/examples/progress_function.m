% A progress function: called during the run with what is known at that moment; it can stop the run.
%
% handle is what was given as "iterhandle"; caller says at which point of the computation the call comes (see res.symbcon,
% KLV_CALLER_...); info holds every information item. A number that is not 0 stops the run; a logical value does not.
%
% kalvoopt calls a function of this name, so it must be on the path or in the current folder. Called without inputs, this
% one solves a problem that it watches.

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

    % Stopped or not, the best solution so far is there; its status says what was proved of it.
    fprintf ('%d, %s: %s, %g\n', r, res.rcodestr, res.sol.int.solsta, res.sol.int.pobjval);
end
