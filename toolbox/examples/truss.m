% The stiffest truss of a given volume, by rotated quadratic cones.
%
%     minimise    sum_k w(k)^2 / (2 * v(k))               energy; w is force times length, v the volume of a bar
%     subject to  B*w = load,  sum (v) = V,  v >= 0       forces at the nodes are in balance
%
% w(k)^2 / (2 * v(k)) <= e(k) says that (v(k), e(k), w(k)) is in a rotated quadratic cone. Young's modulus is 1.

[column, row] = meshgrid (0:3, 0:2);                        % nodes on a grid; those of column 0 are held
nodes = [column(:) row(:)];
[first, last] = find (triu (ones (size (nodes, 1)), 1));
apart = nodes(last, :) - nodes(first, :);
one_step = max (abs (apart), [], 2) == 1;                   % bars to the neighbours, diagonals too
first = first(one_step);
last = last(one_step);
apart = apart(one_step, :);
bars = numel (first);
squared = sum (apart .^ 2, 2);

% Row 2 i - 1 is the force along, row 2 i across at node i; B acts on w = force * length.
k = (1:bars)';
B = sparse ([2 * first - 1; 2 * last - 1; 2 * first; 2 * last], [k; k; k; k], ...
            [apart; -apart] ./ repmat (squared, 2, 2), 2 * size (nodes, 1), bars);
free_nodes = find (nodes(:, 1) > 0);
B = B(sort ([2 * free_nodes - 1; 2 * free_nodes]), :);
load_at = zeros (size (B, 1), 1);
load_at(end - 2) = 1;                                       % in the middle of the free end

% Variables v, e, w.
V = 10;
prob = struct ();
prob.a = [sparse(size (B, 1), 2 * bars) B; sparse(ones (1, bars)) sparse(1, 2 * bars)];
prob.blc = [load_at; V];
prob.buc = prob.blc;
prob.c = [zeros(bars, 1); ones(bars, 1); zeros(bars, 1)];
members = reshape (1:3 * bars, bars, 3)';                   % a column for each cone
prob.cones = struct ('type', ones (1, bars), 'sub', members(:)', 'subptr', 1:3:3 * bars);
[r, res] = kalvoopt ('minimize echo(0)', prob);
itr = res.sol.itr;
volume = itr.xx(1:bars);
fprintf ('%s: energy %.6f; %d of %d bars are used:\n', itr.solsta, itr.pobjval, sum (volume > 1e-3), bars);
for bar = find (volume > 1e-3)'
    fprintf ('  (%d, %d) to (%d, %d): volume %.3f\n', nodes(first(bar), :), nodes(last(bar), :), volume(bar));
end

% The stiffest truss is also the lightest for its largest stress: a linear problem, minimise sum (abs (w)), has L with
% energy L^2 / (2 V).
linear = struct ();
linear.a = [B -B];
linear.c = ones (1, 2 * bars);
linear.blc = load_at;
linear.buc = load_at;
linear.blx = zeros (1, 2 * bars);
[r, res] = kalvoopt ('minimize echo(0)', linear);
assert (abs (res.sol.bas.pobjval ^ 2 / (2 * V) - itr.pobjval) < 1e-4 * itr.pobjval);
