% Octave's host layer, function by function, through the module host_probe.

%!shared path_was
%! path_was = addpath (fullfile (getenv ('KALVO_BUILD'), 'probe'));

%!function value = twice (x)
%!  value = 2 * x;
%!endfunction
%!function value = broken (x)
%!  error ('Some:id', 'broken %d', x);
%!endfunction
%!function value = unassigned (x)
%!endfunction
%!function silent (x)
%!endfunction
%!function value = nested (x)
%!  inner = host_probe ('call', 'twice', x);
%!  inner_failed = host_probe ('call', 'broken', x);
%!  value = {inner{1}, inner_failed{2}};
%!endfunction
%!function value = failing_nested (x)
%!  host_probe ('fail');
%!endfunction

%!test <no accessor aborts, throws or reads beyond what there is>
%! field = struct ('a', 1);
%! cases = {
%!   % value, reads as numbers, is sparse, scalar, has a cell, fields, has the field a
%!   5,                      1, 0, 5, 0, 0, 0
%!   [],                     1, 0, 0, 0, 0, 0
%!   zeros(0, 3),            1, 0, 0, 0, 0, 0
%!   1:5,                    1, 0, 1, 0, 0, 0
%!   5:0,                    1, 0, 0, 0, 0, 0
%!   eye(3),                 1, 0, 1, 0, 0, 0
%!   eye(3)(:, [2 1 3]),     1, 0, 0, 0, 0, 0
%!   find([1 0 1]),          1, 0, 1, 0, 0, 0
%!   ones(2, 3, 4),          1, 0, 1, 0, 0, 0
%!   1+2i,                   1, 0, 1, 0, 0, 0
%!   true,                   1, 0, 1, 0, 0, 0
%!   single(2),              1, 0, 2, 0, 0, 0
%!   int8(5),                1, 0, 5, 0, 0, 0
%!   'abcdef',               1, 0, 97, 0, 0, 0
%!   '',                     1, 0, 0, 0, 0, 0
%!   sparse([0 1; 2 0]),     1, 1, 2, 0, 0, 0
%!   sparse(3, 3),           1, 1, 0, 0, 0, 0
%!   sparse(true),           1, 1, 1, 0, 0, 0
%!   sparse(1+2i),           1, 1, 1, 0, 0, 0
%!   {},                     0, 0, 0, 0, 0, 0
%!   {1},                    0, 0, 0, 1, 0, 0
%!   struct(),               0, 0, 0, 0, 0, 0
%!   struct('a', {}),        0, 0, 0, 0, 1, 0
%!   field,                  0, 0, 0, 0, 1, 1
%!   [field, field],         0, 0, 0, 0, 1, 1
%!   @sin,                   0, 0, 0, 0, 0, 0
%!   @(x) x,                 0, 0, 0, 0, 0, 0
%!   containers.Map(),       0, 0, 0, 0, 0, 0
%!   };
%! for k = 1:rows (cases)
%!   seen = host_probe ('read', cases{k, 1});
%!   assert ({seen.pr, seen.data, seen.ir, seen.scalar, seen.cell, seen.fields, seen.field}, ...
%!           cases(k, [2 2 3:7]), sprintf ('case %d', k));
%!   assert (seen.jc, seen.ir);
%!   assert (seen.beyond, 0);
%! end

%!test <a text is cut to the buffer and always ended>
%! assert (host_probe ('text', 'abc', 4), '0abc');
%! assert (host_probe ('text', 'abcd', 4), '1abc');
%! assert (host_probe ('text', 'abc', 1), '1');
%! assert (host_probe ('text', 'abc', 0), '1~~~~~~~~');
%! assert (host_probe ('text', '', 1), '0');
%! assert (host_probe ('text', ['ab'; 'cd'], 8), '0acbd');
%! assert (host_probe ('text', @sin, 4), '1~~~~~~~~');

%!test <what cannot exist is refused and not overflowed>
%! for kind = {'matrix', 'large matrix', 'negative', 'sparse', 'cell', 'char', 'memory'}
%!   assert (host_probe ('create', kind{1}), 1, kind{1});
%! end

%!test <a function's error is an object, and a missing output is an error>
%! assert (host_probe ('call', 'twice', 21), {42, []});
%! assert (host_probe ('call', 'broken', 7), {[], 'broken 7'});
%! for name = {'unassigned', 'silent', 'no_such_function'}
%!   answer = host_probe ('call', name{1}, 1);
%!   assert (isempty (answer{1}) && ischar (answer{2}));
%! end

%!test <calls nest>
%! assert (host_probe ('call', 'nested', 2), {{4, 'broken 2'}, []});
%! assert (host_probe ('call', 'failing_nested', 2), {[], 'host_probe: on purpose'});

%!error <on purpose> host_probe ('fail')
