% A small linear programme, and what its duals say.
%
% A workshop makes tables, chairs and shelves. One of each earns 60, 30 and 20, needs 8, 6 and 1 units of wood, 4, 2 and
% 1.5 hours of carpentry and 2, 1.5 and 0.5 hours of finishing; 48, 20 and 8 of these are there. At most 5 tables sell.

prob = struct ();
prob.a = [8 6 1; 4 2 1.5; 2 1.5 0.5];       % one row a resource, one column a product
prob.c = [60 30 20];
prob.buc = [48 20 8];                       % no blc: the rows have no lower bound
prob.blx = [0 0 0];                         % nothing is made in negative numbers
prob.bux = [5 Inf Inf];
prob.names.con = {'wood'; 'carpentry'; 'finishing'};
prob.names.var = {'tables'; 'chairs'; 'shelves'};

[r, res] = kalvoopt ('maximize echo(0)', prob);
bas = res.sol.bas;

fprintf ('%s: the plan earns %g\n', bas.solsta, bas.pobjval);
for j = 1:3
    fprintf ('  %-10s %g\n', prob.names.var{j}, bas.xx(j));
end

% A resource's dual y is the profit of one more unit; y is 0 where some of the resource is left over.
for i = 1:3
    fprintf ('  %-10s %5g of %g used; one more unit is worth %g\n', prob.names.con{i}, bas.xc(i), prob.buc(i), bas.y(i));
end

% A product's reduced cost slx - sux is the change of the profit if one more unit had to be made.
reduced_cost = bas.slx - bas.sux;
fprintf ('  forcing a chair into the plan would change what it earns by %g\n', reduced_cost(2));

% Duals and reduced costs prove that no plan earns more: the bound that they give is the plan's own value.
fprintf ('  proved bound %g\n', bas.dobjval);
