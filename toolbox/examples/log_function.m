% A log function: receives the text that would go to the console, line by line.
%
% kalvoopt calls the log function by name, so it must be on the path or in the current folder. Called without inputs, this
% function solves a small problem with itself as the log function.

function log_function (handle, text)
    global lines
    if nargin == 2
        lines{end + 1} = [handle.prefix text];
        return
    end
    lines = {};
    prob = struct ('a', [1 2; 3 1], 'c', [1 1], 'blc', [4 3], 'blx', [0 0]);

    callback = struct ('log', 'log_function', 'loghandle', struct ('prefix', 'run 1: '));
    r = kalvoopt ('minimize', prob, [], callback);

    fprintf ('The response code is %d. %d lines were collected; the first and the last:\n', r, numel (lines));
    fprintf ('%s', lines{[1 end]});
end
