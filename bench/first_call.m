% Where the milliseconds of the first call in a session go.
%
%   first_call (toolbox, file)
function first_call (toolbox, file)
    addpath (toolbox);
    names = {'the module and the library are loaded', 'the engine and its extras are loaded, a first problem is solved', ...
             'the same problem again'};
    commands = {'echo(0)', ['read(' file ') minimize echo(0)'], ['read(' file ') minimize echo(0)']};
    printf ('\na first call\n');
    for k = 1:3
        begin = tic;
        [~, ~] = kalvoopt (commands{k});
        printf ('%8.2f ms  %s\n', 1e3 * toc (begin), names{k});
    end
end
