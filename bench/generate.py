"""Problem files for the benchmarks, made from fixed seeds: the same bytes on every machine.

    generate.py FOLDER          writes every family's files into FOLDER, as free MPS
"""

import pathlib
import random
import sys


class Model:
    """A minimisation problem as rows and columns, written as free MPS."""

    def __init__(self, name):
        self.name = name
        self.rows = []       # (sense, right-hand side)
        self.columns = []    # (cost, upper bound or None, integer, {row: value})

    def row(self, sense, rhs):
        self.rows.append((sense, rhs))
        return len(self.rows) - 1

    def column(self, cost, entries, upper=None, integer=False):
        self.columns.append((cost, upper, integer, entries))

    def write(self, folder):
        lines = [f"NAME {self.name}", "ROWS", " N cost"]
        lines += [f" {sense} r{i}" for i, (sense, _) in enumerate(self.rows)]
        lines.append("COLUMNS")
        inside = False
        for j, (cost, _, integer, entries) in enumerate(self.columns):
            if integer != inside:
                lines.append(f" M{j} 'MARKER' '{'INTORG' if integer else 'INTEND'}'")
                inside = integer
            lines.append(f" x{j} cost {cost}")
            lines += [f" x{j} r{i} {value}" for i, value in entries.items()]
        if inside:
            lines.append(" MEND 'MARKER' 'INTEND'")
        lines.append("RHS")
        lines += [f" rhs r{i} {rhs}" for i, (_, rhs) in enumerate(self.rows) if rhs]
        lines.append("BOUNDS")
        for j, (_, upper, integer, _) in enumerate(self.columns):
            if upper is not None:
                lines.append(f" UP bnd x{j} {upper}")
            elif integer:
                lines.append(f" PL bnd x{j}")
        lines += ["ENDATA", ""]
        (pathlib.Path(folder) / f"{self.name}.mps").write_text("\n".join(lines))


def network(name, nodes, arcs, seed):
    """Minimum-cost flow; a costly path through all nodes keeps it feasible."""
    rng, model = random.Random(seed), Model(name)
    supply = [rng.randint(-20, 20) for _ in range(nodes - 1)]
    supply.append(-sum(supply))
    for value in supply:
        model.row("E", value)
    for i in range(nodes - 1):
        model.column(1000, {i: 1, i + 1: -1})
        model.column(1000, {i + 1: 1, i: -1})
    for _ in range(arcs):
        tail, head = rng.sample(range(nodes), 2)
        model.column(rng.randint(1, 100), {tail: 1, head: -1}, upper=rng.randint(1, 60))
    return model


def multicommodity(name, nodes, arcs, goods, seed):
    """Flows of several goods that share the arcs' capacities."""
    rng, model = random.Random(seed), Model(name)
    for _ in range(goods):
        supply = [0] * nodes
        for _ in range(3):
            source, sink = rng.sample(range(nodes), 2)
            amount = rng.randint(1, 10)
            supply[source] += amount
            supply[sink] -= amount
        for value in supply:
            model.row("E", value)
    pairs = [(i, (i + 1) % nodes) for i in range(nodes)]
    pairs += [tuple(rng.sample(range(nodes), 2)) for _ in range(arcs - nodes)]
    for tail, head in pairs:
        capacity = model.row("L", rng.randint(5, 40))
        cost = rng.randint(1, 50)
        for k in range(goods):
            model.column(cost + rng.randint(0, 9), {k * nodes + tail: 1, k * nodes + head: -1, capacity: 1})
    for k in range(goods):
        for i in range(nodes):
            model.column(5000, {k * nodes + i: 1})
            model.column(5000, {k * nodes + i: -1})
    return model


def dense(name, rows, columns, seed):
    rng, model = random.Random(seed), Model(name)
    matrix = [[round(rng.uniform(0.1, 1), 4) for _ in range(columns)] for _ in range(rows)]
    for i in range(rows):
        model.row("G", round(sum(matrix[i]) * rng.uniform(0.2, 0.4), 4))
    for j in range(columns):
        model.column(round(rng.uniform(1, 5), 4), {i: matrix[i][j] for i in range(rows)}, upper=10)
    return model


def staircase(name, periods, goods, seed):
    """Production with stocks over periods: blocks that touch only their neighbours."""
    rng, model = random.Random(seed), Model(name)
    balance = [[model.row("E", rng.randint(5, 50)) for _ in range(goods)] for _ in range(periods)]
    machines = [[model.row("L", 60 * goods) for _ in range(max(2, goods // 3))] for _ in range(periods)]
    for t in range(periods):
        for g in range(goods):
            for _ in range(3):
                entries = {balance[t][g]: 1}
                for machine in rng.sample(machines[t], 2):
                    entries[machine] = round(rng.uniform(0.5, 3), 3)
                model.column(round(rng.uniform(1, 20), 3), entries, upper=80)
            if t + 1 < periods:
                model.column(round(rng.uniform(0.1, 1), 3), {balance[t][g]: -1, balance[t + 1][g]: 1})
            model.column(400, {balance[t][g]: 1})
    return model


def assignment(name, tasks, machines, seed):
    """Each task is shared among machines of limited time: highly degenerate."""
    rng, model = random.Random(seed), Model(name)
    for _ in range(tasks):
        model.row("E", 1)
    for _ in range(machines):
        model.row("L", 15 * tasks // machines // 2 + 1)
    for i in range(tasks):
        for machine in range(tasks, tasks + machines):
            model.column(rng.randint(1, 50), {i: 1, machine: rng.randint(5, 25)})
    return model


def knapsack(name, rows, columns, seed):
    rng, model = random.Random(seed), Model(name)
    weights = [[rng.randint(5, 100) for _ in range(columns)] for _ in range(rows)]
    for i in range(rows):
        model.row("L", sum(weights[i]) // 3)
    for j in range(columns):
        value = sum(weights[i][j] for i in range(rows)) // rows + rng.randint(-15, 15)
        model.column(-value, {i: weights[i][j] for i in range(rows)}, upper=1, integer=True)
    return model


def covering(name, rows, columns, seed):
    rng, model = random.Random(seed), Model(name)
    for _ in range(rows):
        model.row("G", 1)
    members = [set(rng.sample(range(rows), rng.randint(3, 9))) for _ in range(columns)]
    for i in range(rows):
        members[rng.randrange(columns)].add(i)
    for j in range(columns):
        model.column(rng.randint(1, 20) + len(members[j]), {i: 1 for i in sorted(members[j])}, upper=1, integer=True)
    return model


FILES = [
    network("network-a", 1500, 12000, 1),
    network("network-b", 4000, 30000, 2),
    multicommodity("multicommodity-a", 60, 260, 12, 3),
    multicommodity("multicommodity-b", 100, 500, 20, 4),
    multicommodity("multicommodity-c", 250, 1500, 40, 13),
    dense("dense-a", 150, 300, 5),
    dense("dense-b", 300, 600, 6),
    dense("dense-c", 600, 1500, 14),
    staircase("staircase-a", 40, 12, 7),
    staircase("staircase-b", 120, 20, 8),
    staircase("staircase-c", 300, 40, 15),
    assignment("assignment-a", 800, 80, 16),
    knapsack("knapsack-a", 5, 40, 9),
    knapsack("knapsack-b", 3, 80, 10),
    covering("covering-a", 60, 200, 11),
    covering("covering-b", 100, 300, 12),
]

if __name__ == "__main__":
    folder = pathlib.Path(sys.argv[1])
    folder.mkdir(parents=True, exist_ok=True)
    for model in FILES:
        model.write(folder)
