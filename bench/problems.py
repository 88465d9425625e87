"""Convex problems: read from the files that they are published in, scaled, and stated for kalvoopt and for the conic package.

A Problem minimises (`sense` 1) or maximises (-1) 1/2 x'Px + c'x + fixed subject to row_lower <= Ax + 1/2 x'Qx <= row_upper with
`quadratic` as the matrices Q of some rows, lower <= x <= upper, Fx + g in `domains`, members of x in `cones`. A domain is (kind,
size, exponents), a cone (kind, members, exponents). The kind 'matrix' is the lower triangle of a positive semidefinite matrix,
column by column, entries off the diagonal times the root of 2.
"""

import dataclasses
import gzip
import itertools
import math
import pathlib

import numpy
import scipy.io
import scipy.sparse as sparse

DOMAINS = {"quadratic": 4, "rotated": 5, "exponential": 6, "power": 8}
CONES = {"quadratic": 0, "rotated": 1, "exponential": 2, "power": 4}
ROOT2 = math.sqrt(2)


@dataclasses.dataclass
class Problem:
    c: numpy.ndarray
    a: sparse.csc_matrix
    row_lower: numpy.ndarray
    row_upper: numpy.ndarray
    lower: numpy.ndarray
    upper: numpy.ndarray
    fixed: float = 0.0
    sense: int = 1
    p: sparse.csc_matrix = None
    quadratic: dict = dataclasses.field(default_factory=dict)
    f: sparse.csc_matrix = None
    g: numpy.ndarray = None
    domains: list = dataclasses.field(default_factory=list)
    cones: list = dataclasses.field(default_factory=list)


def read(path):
    name = str(path).removesuffix(".gz")
    if name.endswith(".mod"):
        return typed()[pathlib.Path(name).stem]
    if name.endswith(".mat"):
        data = scipy.io.loadmat(path)
        return read_sedumi(data) if "K" in data else read_quadratic(data)
    opened = gzip.open if str(path).endswith(".gz") else open
    with opened(path, "rt") as file:
        text = file.read()
    return read_cbf(text) if name.endswith(".cbf") else read_qplib(text)


def typed():
    """Published in a modelling language."""
    vector, matrix = numpy.array, lambda rows: sparse.csc_matrix(numpy.array(rows, float))
    free = lambda n: (numpy.full(n, -math.inf), numpy.full(n, math.inf))
    below = lambda *ends: (numpy.full(len(ends), -math.inf), vector(ends, float))
    return {
        "hs11": Problem(vector([-10.0, 0]), matrix([[0, -1]]), *below(0), *free(2), p=matrix([[2, 0], [0, 2]]),
                        quadratic={0: matrix([[2, 0], [0, 0]])}),
        "hs12": Problem(vector([-7.0, -7]), matrix([[0, 0]]), *below(25), *free(2), p=matrix([[1, -1], [-1, 2]]),
                        quadratic={0: matrix([[8, 0], [0, 2]])}),
        "hs22": Problem(vector([-4.0, -2]), matrix([[1, 1], [0, -1]]), *below(2, 0), *free(2), 5, p=matrix([[2, 0], [0, 2]]),
                        quadratic={1: matrix([[2, 0], [0, 0]])}),
        "hs65": Problem(vector([-20 / 9, -20 / 9, -10]), matrix([[0, 0, 0]]), *below(48), vector([-4.5, -4.5, -5]),
                        vector([4.5, 4.5, 5]), 325 / 9, p=matrix([[20 / 9, -16 / 9, 0], [-16 / 9, 20 / 9, 0], [0, 0, 2]]),
                        quadratic={0: matrix([[2, 0, 0], [0, 2, 0], [0, 0, 2]])}),
    }


def infinite(values, sign):
    values = numpy.array(values, float).ravel()
    return numpy.where(sign * values > 1e19, sign * math.inf, values)


def read_quadratic(data):
    """P, q, r, A, l, u; the last rows of A are the identity."""
    rows = sparse.csc_matrix(data["A"], dtype=float)
    c = numpy.array(data["q"], float).ravel()
    m = rows.shape[0] - len(c)
    lower, upper = infinite(data["l"], -1), infinite(data["u"], 1)
    return Problem(c, rows[:m], lower[:m], upper[:m], lower[m:], upper[m:], float(numpy.ravel(data["r"])[0]),
                   p=sparse.csc_matrix(data["P"], dtype=float))


def read_sedumi(data):
    sizes = {name: [int(d) for d in numpy.ravel(data["K"][name][0, 0])] for name in data["K"].dtype.names}
    free, nonnegative = (sum(sizes.get(key, [])) for key in "fl")
    c = sparse.csc_matrix(data["c"], dtype=float).toarray().ravel()
    b = sparse.csc_matrix(data["b"], dtype=float).toarray().ravel()
    a = sparse.csc_matrix(data["At"].T if "At" in data else data["A"], dtype=float)
    a = a if a.shape[0] == len(b) else a.T.tocsc()
    cones, starts, at, width = [], [], free + nonnegative, free + nonnegative
    fold = [sparse.identity(at)]
    for key, kind in (("q", "quadratic"), ("r", "rotated"), ("s", "matrix")):
        for size in filter(None, sizes.get(key, [])):
            fold.append(triangle(size).T if kind == "matrix" else sparse.identity(size))
            cones.append((kind, numpy.arange(width, width + fold[-1].shape[1]), None))
            width += fold[-1].shape[1]
    fold = sparse.block_diag(fold, "csc")
    lower = numpy.full(width, -math.inf)
    lower[free:free + nonnegative] = 0
    return Problem(fold.T @ c, (a @ fold).tocsc(), b, b, lower, numpy.full(width, math.inf), cones=cones)


def triangle(order):
    """Takes a matrix, column by column, to the triangle of its symmetric part."""
    column, row = numpy.triu_indices(order)
    value = numpy.where(row == column, 0.5, 1 / ROOT2)
    at = numpy.arange(len(row))
    return sparse.csc_matrix((numpy.tile(value, 2), (numpy.tile(at, 2), numpy.r_[row + order * column, column + order * row])),
                             (len(row), order * order))


def read_cbf(text):
    sections, exponents = {}, []
    lines = iter(text.splitlines())
    content = lambda: next(line for line in lines if line.strip() and not line.startswith("#")).split()
    while True:
        try:
            name, = content()
        except (StopIteration, RuntimeError):
            break
        if name in ("VER", "OBJSENSE"):
            sections[name] = content()[0]
        elif name == "POWCONES":
            exponents = [[float(content()[0]) for _ in range(int(content()[0]))] for _ in range(int(content()[0]))]
        elif name in ("VAR", "CON"):
            size, count = map(int, content())
            sections[name] = size, [content() for _ in range(count)]
        elif name == "OBJBCOORD":
            sections[name] = float(content()[0])
        else:
            sections[name] = numpy.array([content() for _ in range(int(content()[0]))], float)

    def split(name):
        """Bounds of lines, and (kind, members, exponents)."""
        size, parts = sections.get(name, (0, []))
        low, high, cones, at = numpy.full(size, -math.inf), numpy.full(size, math.inf), [], 0
        for kind, count in parts:
            members = numpy.arange(at, at := at + int(count))
            low[members] = 0 if kind in ("L+", "L=") else -math.inf
            high[members] = 0 if kind in ("L-", "L=") else math.inf
            if kind.startswith("@"):
                cones.append(("power", members, exponents[int(kind[1:].split(":")[0])]))
            elif kind[0] != "L" and kind != "F":
                cones.append(({"Q": "quadratic", "QR": "rotated", "EXP": "exponential"}[kind], members, None))
        return low, high, cones

    def vector(name, size):
        entries = sections.get(name, numpy.zeros((0, 2)))
        return numpy.bincount(entries[:, 0].astype(int), entries[:, 1], size)

    lower, upper, cones = split("VAR")
    row_lower, row_upper, domains = split("CON")
    m, n = len(row_lower), len(lower)
    i, j, value = sections.get("ACOORD", numpy.zeros((0, 3))).T
    a = sparse.csr_matrix((value, (i.astype(int), j.astype(int))), (m, n))
    b = vector("BCOORD", m)
    inside = numpy.concatenate([numpy.zeros(0, int)] + [members for _, members, _ in domains])
    linear = numpy.setdiff1d(numpy.arange(m), inside)
    return Problem(vector("OBJACOORD", n), a[linear].tocsc(), (row_lower - b)[linear], (row_upper - b)[linear], lower, upper,
                   sections.get("OBJBCOORD", 0.0), -1 if sections["OBJSENSE"] == "MAX" else 1, f=a[inside].tocsc(), g=b[inside],
                   domains=[(kind, len(members), powers) for kind, members, powers in domains], cones=cones)


def read_qplib(text):
    lines = (line.split("#")[0].split() for line in text.splitlines()[1:])
    lines = (words for words in lines if words)
    word = lambda: next(lines)[0]
    objective, _, rows = word()
    sense = -1 if word().lower() == "maximize" else 1
    n, m = int(word()), 0 if rows in "NB" else int(word())
    entries = lambda width: numpy.array([next(lines)[:width] for _ in range(int(word()))], float).reshape(-1, width)

    def vector(size):
        values = numpy.full(size, float(word()))
        given = entries(2)
        values[given[:, 0].astype(int) - 1] = given[:, 1]
        return values

    def matrix(entries, height):
        i, j = (entries[:, k].astype(int) - 1 for k in (0, 1))
        return sparse.csc_matrix((entries[:, 2], (i, j)), (height, n))

    def symmetric(entries):
        # An entry off the diagonal stands for both halves.
        half = matrix(entries, n)
        return ((half + half.T) / 2).tocsc()

    p = None if objective == "L" else symmetric(entries(3))
    c, fixed = vector(n), float(word())
    quadratic = {}
    if rows in "QCD":
        given = entries(4)
        given = given[numpy.argsort(given[:, 0], kind="stable")]
        for part in numpy.split(given, numpy.flatnonzero(numpy.diff(given[:, 0])) + 1):
            quadratic[int(part[0, 0]) - 1] = symmetric(part[:, 1:])
    a, ends = matrix(numpy.zeros((0, 3)), 0), [numpy.zeros(0)] * 2
    if m > 0:
        a = matrix(entries(3), m)
    threshold = float(word())
    if m > 0:
        ends = vector(m), vector(m)
    bounds = vector(n), vector(n)
    open_at = lambda values, sign: numpy.where(sign * values >= threshold, sign * math.inf, values)
    return Problem(c, a, open_at(ends[0], -1), open_at(ends[1], 1), open_at(bounds[0], -1), open_at(bounds[1], 1), fixed, sense, p,
                   quadratic)


CENTRES = {"quadratic": (1, 0.1, -0.2, 0.3, 0.1), "exponential": (1.258967, 0.556409, -1.051383)}


def generated(kind, n):
    """A problem of about n variables and half as many rows, four entries in each, near each other, and with interior solutions:
    'qp', 'quadratic' (cones of five), 'exponential', or 'matrix' (one whose triangle has n entries)."""
    random = numpy.random.default_rng(1)
    centre = numpy.array(CENTRES.get(kind, (1,)))
    count = n // len(centre)
    n = count * len(centre)
    m = n // 2
    row = numpy.repeat(numpy.arange(m), 4)
    column = numpy.minimum(2 * row + random.integers(0, 10, 4 * m), n - 1)
    a = sparse.csc_matrix((random.uniform(-1, 1, 4 * m), (row, column)), (m, n))
    centres = [numpy.kron(random.uniform(0.5, 2, count), centre) for _ in range(2)]
    if kind == "matrix":
        order = order_of(n)
        n = order * (order + 1) // 2
        m = order
        inside = (numpy.arange(n) == 0) | numpy.isin(numpy.arange(n), numpy.cumsum(numpy.arange(order, 1, -1)))
        a = sparse.random(m, n, 4 / n, "csc", random_state=random) + sparse.csc_matrix(
            (numpy.ones(order), (numpy.arange(order), numpy.flatnonzero(inside))), (m, n))
        centres = [inside.astype(float)] * 2
    point, slack = centres
    cost = a.T @ random.uniform(-1, 1, m) + slack
    problem = Problem(cost, a, a @ point, a @ point, numpy.full(n, -math.inf), numpy.full(n, math.inf))
    if kind == "qp":
        problem.lower[:] = 0
        band = sparse.diags([random.uniform(0, 0.4, n - 1)], [1])
        problem.p = (band + band.T + sparse.identity(n)).tocsc()
    else:
        size = n if kind == "matrix" else len(centre)
        problem.cones = [(kind, numpy.arange(k, k + size), None) for k in range(0, n, size)]
    return problem


def scaled(problem, seed, spread=0, cost=1, size=1):
    """An equivalent problem, its objective times cost * size: rows, columns and whole cones times 10 to a number in +-spread, costs
    times `cost`, points and so bounds times `size`."""
    random = numpy.random.default_rng(seed)
    factors = lambda count: 10 ** random.uniform(-spread, spread, count)
    column, row = factors(len(problem.c)), factors(len(problem.row_lower))
    for _, members, _ in problem.cones:
        column[members] = column[members[0]]
    diagonal = sparse.diags
    changed = dataclasses.replace(
        problem, c=cost * column * problem.c, fixed=cost * size * problem.fixed, a=(diagonal(row) @ problem.a @ diagonal(column)).tocsc(),
        row_lower=size * row * problem.row_lower, row_upper=size * row * problem.row_upper,
        lower=size / column * problem.lower, upper=size / column * problem.upper,
        quadratic={k: (diagonal(column) @ q @ diagonal(column) * (row[k] / size)).tocsc() for k, q in problem.quadratic.items()})
    if problem.p is not None:
        changed.p = (diagonal(column) @ problem.p @ diagonal(column) * (cost / size)).tocsc()
    if problem.f is not None:
        block = numpy.concatenate([numpy.zeros(0)] + [numpy.full(length, *factors(1)) for _, length, _ in problem.domains])
        changed.f, changed.g = (diagonal(block) @ problem.f @ diagonal(column)).tocsc(), size * block * problem.g
    return changed


def record(problem):
    """The record that kalvoopt takes, for scipy.io.savemat."""
    matrices = [members for kind, members, _ in problem.cones if kind == "matrix"]
    plain = numpy.setdiff1d(numpy.arange(len(problem.c)), numpy.concatenate([numpy.zeros(0, int), *matrices]))
    place = numpy.zeros(len(problem.c), int)
    place[plain] = numpy.arange(len(plain))
    cones = [cone for cone in problem.cones if cone[0] != "matrix"]
    column = lambda values: numpy.reshape(values, (-1, 1)).astype(float)
    fields = {"a": problem.a[:, plain], "c": column(problem.c[plain]), "cfix": float(problem.fixed), "objsense": "minimize" if problem.sense == 1 else "maximize",
              "blc": column(problem.row_lower), "buc": column(problem.row_upper),
              "blx": column(problem.lower[plain]), "bux": column(problem.upper[plain])}
    if problem.p is not None:
        low = sparse.tril(problem.p, format="coo")
        fields |= {"qosubi": column(low.row + 1), "qosubj": column(low.col + 1), "qoval": column(low.data)}
    if problem.quadratic:
        low = {k: sparse.tril(q, format="coo") for k, q in problem.quadratic.items()}
        fields |= {"qcsubk": column(numpy.concatenate([numpy.full(q.nnz, k + 1) for k, q in low.items()])),
                   "qcsubi": column(numpy.concatenate([q.row + 1 for q in low.values()])),
                   "qcsubj": column(numpy.concatenate([q.col + 1 for q in low.values()])),
                   "qcval": column(numpy.concatenate([q.data for q in low.values()]))}
    if problem.domains:
        rows, constants, domains = blocks(problem)
        fields |= {"f": rows.tocsc(), "g": column(constants)}
        flat = [[DOMAINS[kind], size] + ([len(powers), *powers] if powers else []) for kind, size, powers in domains]
        fields["accs"] = column(numpy.concatenate(flat))
    elif cones:
        sizes = [len(members) for _, members, _ in cones]
        fields["cones"] = {"type": column([CONES[kind] for kind, _, _ in cones]),
                           "sub": column(place[numpy.concatenate([members for _, members, _ in cones])] + 1),
                           "subptr": column(numpy.cumsum([0] + sizes[:-1]) + 1),
                           "conepar": column([powers[0] / sum(powers) if powers else 0 for _, _, powers in cones])}
    if matrices:
        orders = [order_of(len(members)) for members in matrices]
        fields["bardim"] = column(orders)
        terms = {"barc": [], "bara": []}
        for j, (members, order) in enumerate(zip(matrices, orders)):
            right, down = numpy.triu_indices(order)
            weight = numpy.where(right == down, 1, 1 / ROOT2)
            for name, part in (("barc", sparse.coo_matrix(problem.c[None, members])), ("bara", problem.a[:, members].tocoo())):
                at = part.col
                terms[name].append([part.row + 1, numpy.full(len(at), j + 1), down[at] + 1, right[at] + 1, part.data * weight[at]])
        for name, parts in terms.items():
            values = map(numpy.concatenate, zip(*parts))
            fields[name] = dict(zip(("subi", "subj", "subk", "subl", "val"), map(column, values)))
        del fields["barc"]["subi"]
    return fields


def order_of(length):
    return (math.isqrt(8 * length + 1) - 1) // 2


def blocks(problem):
    """Domains, and cones of variables as domains."""
    n = len(problem.c)
    inside = numpy.concatenate([numpy.zeros(0, int)] + [members for _, members, _ in problem.cones])
    identity = sparse.csr_matrix((numpy.ones(len(inside)), (numpy.arange(len(inside)), inside)), (len(inside), n))
    given = [] if problem.f is None else [problem.f]
    constants = numpy.concatenate([numpy.zeros(0) if problem.g is None else problem.g, numpy.zeros(len(inside))])
    return (sparse.vstack([*given, identity]).tocsr(), constants,
            problem.domains + [(kind, len(members), powers) for kind, members, powers in problem.cones])


def conic(problem):
    """P, q, A, b and the cones (minimise 1/2 x'Px + q'x, b - Ax in the cones) of the conic package."""
    import clarabel

    n = len(problem.c)
    p = sparse.csc_matrix((n, n)) if problem.p is None else sparse.triu(problem.p * problem.sense).tocsc()
    linear = numpy.setdiff1d(numpy.arange(problem.a.shape[0]), list(problem.quadratic))
    rows = sparse.vstack([problem.a.tocsr()[linear], sparse.identity(n)]).tocsr()
    low = numpy.concatenate([problem.row_lower[linear], problem.lower])
    high = numpy.concatenate([problem.row_upper[linear], problem.upper])
    fixed = low == high
    below, above = ~fixed & numpy.isfinite(low), ~fixed & numpy.isfinite(high)
    parts, sides = [rows[fixed], rows[above], -rows[below]], [high[fixed], high[above], -low[below]]
    cones = [clarabel.ZeroConeT(int(fixed.sum())), clarabel.NonnegativeConeT(int(above.sum() + below.sum()))]
    for k, q in problem.quadratic.items():
        # 1/2 x'Qx + ax <= u as (u - ax + 1/2, u - ax - 1/2, root of Q x) in a second-order cone.
        sign = 1 if math.isfinite(problem.row_upper[k]) else -1
        used = numpy.unique(q.nonzero()[0])
        values, vectors = numpy.linalg.eigh(sign * q[used][:, used].toarray())
        keep = values > 1e-12 * values.max()
        root = sparse.coo_matrix(numpy.sqrt(values[keep])[:, None] * vectors[:, keep].T)
        root = sparse.csr_matrix((root.data, (root.row, used[root.col])), (root.shape[0], n))
        row, end = sign * problem.a.tocsr()[k], sign * (problem.row_upper if sign == 1 else problem.row_lower)[k]
        parts.append(sparse.vstack([row, row, -root]))
        sides.append(numpy.concatenate([[end + 0.5, end - 0.5], numpy.zeros(root.shape[0])]))
        cones.append(clarabel.SecondOrderConeT(2 + root.shape[0]))
    rows, constants, domains = blocks(problem)
    if domains:
        turn = []
        for (kind, size), alike in itertools.groupby(domains, lambda domain: domain[:2]):
            alike = list(alike)
            if kind == "rotated":
                block = sparse.block_diag([numpy.array([[1, 1], [1, -1]]) / ROOT2, sparse.identity(size - 2)])
                cones += [clarabel.SecondOrderConeT(size) for _ in alike]
            elif kind == "exponential":
                block = sparse.identity(3).tocsr()[[2, 1, 0]]
                cones += [clarabel.ExponentialConeT() for _ in alike]
            elif kind == "matrix":
                right, down = numpy.triu_indices(order_of(size))
                block = sparse.identity(size).tocsr()[numpy.lexsort((right, down))]
                cones += [clarabel.PSDTriangleConeT(order_of(size)) for _ in alike]
            else:
                block = sparse.identity(size)
                cones += [clarabel.PowerConeT(powers[0] / sum(powers)) if powers else clarabel.SecondOrderConeT(size)
                          for _, _, powers in alike]
            turn.append(sparse.kron(sparse.identity(len(alike)), block))
        turn = sparse.block_diag(turn, "csr")
        parts.append(-turn @ rows)
        sides.append(turn @ constants)
    return p, problem.sense * problem.c, sparse.vstack(parts).tocsc(), numpy.concatenate(sides), cones
