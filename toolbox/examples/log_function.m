% A log function: receives the text that would go to the console, line by line.
1;

function collect (handle, text)
    global lines
    lines{end + 1} = [handle.prefix text];
end

global lines
lines = {};
prob = struct ('a', [1 2; 3 1], 'c', [1 1], 'blc', [4 3], 'blx', [0 0]);

callback = struct ('log', 'collect', 'loghandle', struct ('prefix', 'run 1: '));
[r, res] = kalvoopt ('minimize', prob, [], callback);

printf ('%d lines were collected; the first and the last:\n', numel (lines));
printf ('%s', lines{[1 end]});
