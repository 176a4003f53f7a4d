"""Filters that the page must understand as the command line does: those that were thought of, and random ones."""

import random

EXPRESSIONS = [
    "name = CADIMemRead", "name != CADIMemRead", "name ~ Mem", "name !~ Mem", "name < CADIMem", "name >= CADIMem",
    "status = CADI_STATUS_OK", "status != CADI_STATUS_OK", "status ~ Permission", "status = ''", "status = \"\"",
    "failed", "not failed", "open", "returned", "not not open", "failed or open", "failed and open",
    "not (failed or open) and name ~ Reg", "(failed", "failed)", "()", "((failed))", "not", "and", "or failed", "failed failed",
    "number = 52", "number < 10", "call >= 60", "number == 0x10", "number ~ 5", "number = abc", "number = -1",
    "number = 9007199254740995", "number > 9007199254740994", "number = 18446744073709551615", "number = 18446744073709551616",
    "parent = 55", "parent != 55", "parent > 0", "thread = T1", "thread != T2", "thread = 1234", "thread > 0", "thread = t1", "thread = T",
    "took > 1ms", "took > 5us", "took <= 2us", "took = 3us", "took < 0.001", "took >= 1000ns", "took > .5ms", "took > -1", "took > 1.2.3", "took > ms",
    "took > 1h", "took ~ 1", "took < 99999999999s", "time > 10ms", "time < 200us", "time < 0", "return >= 0.5", "return < 1s",
    "arg.addr = 0x3000", "arg.location.addr = 12288", "arg.addr > 0x2000", "arg.addr ~ 3000", "arg.bytes = 4", "arg.x = 0x3000", "arg.x = 12288",
    "arg.data = e8030000", "arg.data ~ e8", "result.return = CADI_STATUS_OK", "result.mode ~ Run", "arg.regNumber < 5", "result.regNumber = 32",
    "result.bytes = '00000000 00000000 00000000 00003000 '", "arg. = 1", "arg = 1", "arg.nothing = 1", "arg.a.x = abc", "arg.deep.a.x != abc",
    "address = 1", "address ~ 0x", "name", "name =", "name = 'unclosed", "name == \"CADIMemRead\"", "name ~= Mem", "name => a", "name = a b",
    "'name' = CADIMemRead", "nonsense = 1", "name~Mem", "name~Mem and(failed)", "   name ~ Mem", "name ~ Mem   ", "name ~ '='", "Failed", "name ! Mem",
    "not " * 99 + "failed", "not " * 100 + "failed", "(" * 99 + "failed" + ")" * 99, "(" * 101 + "failed" + ")" * 101,
]

OPTIONS = [
    ["-n", "CADIMem*"], ["-n", "CADIMem*,modeChange"], ["-n", "*"], ["-n", "?ADI*Read"], ["-n", "**R*d"], ["--name", "CADIRegRead"],
    ["-f"], ["--failed"], ["--open"], ["-f", "--open"], ["-t", "T1"], ["-t", "T2,T1"], ["-t", "1234"], ["-t", "x"], ["--thread", "t2"],
    ["--calls", "55..68"], ["--calls", "..9,60.."], ["--calls", "52"], ["--calls", ","], ["--calls", "a"],
    ["--from", "10ms"], ["--to", "0.0004"], ["--from", "100us", "--to", "1ms"], ["--from", "x"], ["--slower", "5us"], ["--slower", "1x"],
    ["--inside", "55"], ["--inside", "29"], ["--inside", "x"], ["--grep", "RAM"], ["--grep", "3000"], ["--grep", "CADI_STATUS_Perm"],
    ["-w", "name ~ Mem", "--slower", "2us"], ["--where", "failed", "-n", "CADIReg*"],
]


def random_expressions(count, seed=7):
    chance = random.Random(seed)
    fields = ["name", "status", "number", "took", "time", "thread", "parent", "arg.addr", "arg.bytes", "result.bytes", "result.return", "nonsense"]
    values = ["CADIMemRead", "Mem", "OK", "5", "0x10", "T1", "1ms", "3us", "'a b'", "''", "0", "CADI_STATUS_OK", "e8", "60"]

    def test():
        if chance.random() < 0.2:
            return chance.choice(["failed", "open", "returned"])
        blank = chance.choice(["", " "])
        return chance.choice(fields) + blank + chance.choice(["=", "!=", "<", "<=", ">", ">=", "~", "!~", "=="]) + blank + chance.choice(values)

    def expression(depth):
        kind = chance.random()
        if depth == 0 or kind < 0.3:
            return test()
        if kind < 0.5:
            return expression(depth - 1) + chance.choice([" and ", " or "]) + expression(depth - 1)
        if kind < 0.7:
            return "not " + expression(depth - 1)
        return "(" + expression(depth - 1) + chance.choice([")", ")", ")", ")", ""])

    return [expression(3) for _ in range(count)]
