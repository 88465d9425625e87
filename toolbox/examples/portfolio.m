% A portfolio of least risk, as a quadratic problem and as a conic one.
%
%     minimise    x'*S*x / 2                              half the variance of the return
%     subject to  sum (x) = 1,  mu'*x >= target,  x >= 0
%
% With S = G'*G the conic form minimises t where (t, 1, G*x) is in a rotated quadratic cone: 2 * t * 1 >= norm (G*x)^2.

mu = [0.06; 0.09; 0.12; 0.17];                              % expected returns of four assets
S = [4 1 0 1; 1 9 3 2; 0 3 16 6; 1 2 6 36] / 100;           % their covariances
n = 4;

quadratic = struct ();
quadratic.a = sparse ([ones(1, n); mu']);
quadratic.blc = [1 0];                                      % the target is set below
quadratic.buc = [1 Inf];
quadratic.blx = zeros (1, n);
[quadratic.qosubi, quadratic.qosubj, quadratic.qoval] = find (tril (S));     % one triangle of S

conic = struct ();                                          % variables x, t
conic.a = [quadratic.a sparse(2, 1)];
conic.c = [zeros(1, n) 1];
conic.buc = quadratic.buc;
conic.blx = [zeros(1, n) -Inf];
conic.f = sparse ([zeros(1, n) 1; zeros(1, n + 1); chol(S) zeros(n, 1)]);
conic.g = [0; 1; zeros(n, 1)];
conic.accs = [5 n + 2];                                     % one rotated quadratic cone of n + 2 rows

fprintf ('return  deviation  portfolio\n');
for target = [0.08 0.1 0.12 0.14]
    quadratic.blc = [1 target];
    conic.blc = [1 target];
    [r, q] = kalvoopt ('minimize echo(0)', quadratic);
    [r, k] = kalvoopt ('minimize echo(0)', conic);
    x = q.sol.itr.xx;
    fprintf ('%5.0f%%  %8.2f%%  %s\n', 100 * mu' * x, 100 * sqrt (x' * S * x), sprintf ('%6.1f%%', 100 * x));
    assert (strcmp (q.sol.itr.solsta, 'OPTIMAL') && strcmp (k.sol.itr.solsta, 'OPTIMAL'));
    assert (norm (k.sol.itr.xx(1:n) - x) < 1e-3);           % both forms have the same portfolio

    % No asset that is held would lower the risk by being held more or less: S*x - a'*y is 0 where x > 0, else >= 0.
    slope = S * x - quadratic.a' * q.sol.itr.y;
    assert (all (slope > -1e-6) && abs (x' * slope) < 1e-6);
end
fprintf ('one more point of return costs %.4f of half the variance\n', 0.01 * q.sol.itr.y(2));
