#!/usr/bin/env python3
"""The same verdicts as tests/bench/memc.txt in Python: N tests of 10 V with a tolerance of 0.1 % + 0.002 V, the
system's accuracy 0.002 V at k = 2, one reading of 1 mV resolution, the root difference of squares as guard band. It
writes the two log lines of each test as the program does, a write a test.

usage: memc_peer.py N LOG
"""
import math
import struct
import sys

EPS = 1e-11
THRESHOLD = 70.0
OOT = 200.0
COLUMNS = (8, 14, 29, 44, 60, 73)


def is_fail(percent):
    return percent > 100.0 + 100.0 * EPS


def percent_of(indicated, actual, neg, pos):
    side = pos if indicated >= actual else neg
    if abs(side) < 1e-20:
        return 501.0
    return abs((actual - indicated) * 100.0 / side)


def number(value, units):
    for digits in range(9, 0, -1):
        text = "%.*g" % (digits, value)
        if len(text) + len(units) <= 14:
            return text + units
    return "?"


def aligned(value):
    text = "%.3f" % value
    point = text.index(".")
    return "%3s%s" % (text[:point], text[point:point + 4])


def error_column(indicated, actual, reference):
    d = indicated - actual
    if indicated and actual and reference:
        r = d / reference
        if abs(r) >= 5:
            return ">500     %"
        if abs(r) < 0.00099999:
            return "%-8s ppm" % aligned(r * 1e6)[:8]
        return "%-8s %%" % aligned(r * 100)[:8]
    return ">500" if abs(d) >= 500 else "%.6f" % d


def place(parts):
    line = [" "] * 79
    for column, text in parts:
        line[column:column + len(text)] = text
    return "".join(line)


def uncertainty(sys_acc, conf, resolution):
    u = [0.0] * 10
    c = [1.0] * 10
    s2 = 0.5 * resolution / math.sqrt(3)
    u[0] = sys_acc / conf
    u[1] = math.sqrt(0.0 + s2 * s2)
    rss = math.sqrt(sum((ci * ui) ** 2 for ci, ui in zip(c, u)))
    return rss, 2.0 * rss


def main():
    count, path = int(sys.argv[1]), sys.argv[2]
    nominal, sys_tol = 10.0, 0.002
    failed = 0
    with open(path, "wb", buffering=0) as log:
        for i in range(1, count + 1):
            actual = 10 + 1e-7 * i
            indicated = nominal
            neg = pos = abs(nominal / 100) * 0.1 + 0.002
            tur = pos / sys_tol
            std, exp = uncertainty(sys_tol, 2.0, 0.001)
            inner_neg = math.sqrt(neg * neg - exp * exp)
            inner_pos = math.sqrt(pos * pos - exp * exp)
            outer_neg, outer_pos = neg + (neg - inner_neg), pos + (pos - inner_pos)
            p = percent_of(indicated, actual, neg, pos)
            g1 = percent_of(indicated, actual, inner_neg, inner_pos)
            g2 = percent_of(indicated, actual, outer_neg, outer_pos)
            condition = ""
            if p > OOT:
                condition = "NOTIFY USER"
            if not is_fail(g1):
                word = "PASS"
            elif not is_fail(p):
                word = "PASS"
            elif not is_fail(g2):
                word = "FAIL"
            else:
                word = "FAIL"
            if word == "PASS" and p > THRESHOLD:
                condition = "MARGINAL"
            failed += word == "FAIL"
            percent = "%3.0f" % p if p <= 500 else ">500"
            first = place([(0, "%3d" % 1), (8, ""), (14, number(indicated, "V")), (29, number(actual, "V")),
                           (60, error_column(indicated, actual, nominal)), (73, percent)])
            second = place([(8, "SYSTEM TOL:%sV" % ("%#.5g" % sys_tol)), (31, "TEST TOL:%sV" % ("%#.5g" % pos)),
                            (51, "TUR:%4.1f" % tur if tur < 4 else ""), (60, condition), (73, word)])
            raw = struct.pack(">d", indicated).hex() + struct.pack(">d", actual).hex()
            log.write(("0001.008 S %s    %s             %s:::::: :%.5E:%.5E:%.5E:\r\n0001.008 S %s\r\n"
                       % (first, "10.000V", raw, std, exp, 2.0, second)).encode("cp1252"))
    print("failed:", failed)


main()
