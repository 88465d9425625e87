% A geometric programme, by exponential cones: an open tank of a given volume with the least surface.
%
%     minimise    x*y + 2*x*z + 2*y*z
%     subject to  x*y*z >= V
%
% In u = log ([x y z]) each product is exp (e*u + log (coefficient)), and the volume a linear constraint. exp (t) bounds the surface
% where p1 + p2 + p3 <= 1 and (pk, 1, e(k,:)*u + log (coefficient(k)) - t) are in exponential cones.

V = 4;
exponents = [1 1 0; 1 0 1; 0 1 1];                          % a row for each product
coefficients = [1; 2; 2];

% Variables u, t, p.
prob = struct ();
prob.a = sparse ([1 1 1 0 0 0 0; 0 0 0 0 1 1 1]);           % the volume; p1 + p2 + p3
prob.blc = [log(V) -Inf];
prob.buc = [Inf 1];
prob.c = [0 0 0 1 0 0 0];
prob.f = sparse (9, 7);
prob.g = zeros (9, 1);
for k = 1:3
    prob.f(3 * k - 2, 4 + k) = 1;
    prob.g(3 * k - 1) = 1;
    prob.f(3 * k, 1:4) = [exponents(k, :) -1];
    prob.g(3 * k) = log (coefficients(k));
end
prob.accs = [6 3 6 3 6 3];

[r, res] = kalvoopt ('minimize echo(0)', prob);
size_of_tank = exp (res.sol.itr.xx(1:3));
surface = exp (res.sol.itr.pobjval);
fprintf ('%s: %s, surface %.6f\n', res.sol.itr.solsta, mat2str (size_of_tank', 6), surface);

% In closed form: a square of side (2 V)^(1/3), half as high as wide.
side = (2 * V) ^ (1 / 3);
assert (norm (size_of_tank - [side; side; side / 2]) < 1e-3);
assert (abs (surface - 3 * side ^ 2) < 1e-5);

% Duals of logarithms are elasticities: the surface grows like V^(2/3).
fprintf ('1 %% more volume takes %.4f %% more surface\n', res.sol.itr.y(1));
assert (abs (res.sol.itr.y(1) - 2 / 3) < 1e-4);
