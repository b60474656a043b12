#!/usr/bin/env python3
"""The steps behind a run beside what one would otherwise take: sorting 200,000 records against sort(1) by bytes, the
two passes over a log of 200,000 lines against mawk, and the delimited pair against the csv module of Python.

usage: results_peer.py BENCH FOLDER [PAIRS]     BENCH: the program results_bench; FOLDER: room for 300 MB
       results_peer.py csv FILE N               (the peer of the delimited pair)

Prints the ratio of the CPU times of whole processes, ours by the peer's, pair by pair. Of the sort and of the delimited
pair the records are made by a run of their own that is taken off - a run of the program has them in memory - and so is
the start of Python; of the sort the ratio of the whole processes is printed as well.
"""
import csv
import os
import random
import statistics
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
ROWS = 20000


def write_csv(path, count):
    rows = []
    for number in range(1000):
        row = [number]
        for column in range(1, 314):
            if column % 50 == 0:
                row.append(number % 3)
            elif column < 250:
                on = (column // 3) % 5 < 2
                row.append(("%.6f" % (123.456789 + number), "m", "V")[column % 3] if on else "")
            else:
                row.append("operator's remark" if column % 2 else "DC Volts 10 V @ 1 kHz")
        rows.append(row)
    with open(path, "w", newline="") as out:
        writer = csv.writer(out, quotechar="'", quoting=csv.QUOTE_NONNUMERIC, doublequote=True,
                            lineterminator="\r\n")
        for number in range(count):
            row = rows[number % 1000]
            row[0] = number + 1
            writer.writerow(row)


def make_lines(path):
    draw = random.Random(3)
    lines = []
    for k in range(200000):
        key = (1 + k // 20000, draw.randrange(1, 5), 1 + (k // 2000) % 10, draw.randrange(1, 5),
               1 + (k // 100) % 20, draw.randrange(1, 5), 1 + k % 9999, 1 + k % 7)
        lines.append((("%04d.%03d." * 4)[:-1] % key + " I %d" % k).ljust(329, "x") + "\n")
    draw.shuffle(lines)
    with open(path, "w") as out:
        out.writelines(lines)


def make_log(path):
    draw = random.Random(4)
    out, runs, major = ["0000.000 C         999 ENTER P\n"], 0, 0
    while runs < 100000:
        major += 1
        for minor in range(1, 12):
            for _ in range(draw.randrange(2, 5) if draw.random() < .125 else 1):
                head = "%04d.%03d I " % (major, minor)
                word = "FAIL" if draw.random() < .1 else "PASS"
                out.append(head + ("%3d" % major).ljust(73) + " 50".ljust(7) + "%-20s" % "10"
                           + "4023333333333333" * 2 + "3:d:10 V:10.01 V:9.9 V:10.1 V: :1E-3:2E-3:2:\n")
                out.append(head + "".ljust(73) + word.ljust(6) + "\n")
                runs += 1
                if draw.random() < .005:
                    out.append("%04d.%03d c \n" % (major, minor))
    out.append("0000.000 L             LEAVE P\n")
    with open(path, "w") as file:
        file.writelines(out)


def cpu(command, output):
    null = [(os.POSIX_SPAWN_OPEN, 1, output, os.O_WRONLY | os.O_CREAT | os.O_TRUNC, 0o644)]
    child = os.posix_spawnp(command[0], command, dict(os.environ, LC_ALL="C"), file_actions=null)
    _, status, used = os.wait4(child, 0)
    if status:
        sys.exit("%s: status %d" % (" ".join(command), status))
    return used.ru_utime + used.ru_stime


def main():
    bench, folder = sys.argv[1], sys.argv[2]
    pairs = int(sys.argv[3]) if len(sys.argv) > 3 else 5
    os.makedirs(folder, exist_ok=True)
    at = lambda name: os.path.join(folder, name)
    make_lines(at("lines.txt"))
    make_log(at("log.txt"))

    def ours_csv():
        total = cpu([bench, "csv", folder, str(ROWS)], os.devnull)
        for name in ("results-001.txt", "readings-001.txt"):
            os.remove(at(name))
        return total - cpu([bench, "build", folder, str(ROWS)], os.devnull)

    def peer_csv():
        me = [sys.executable, os.path.abspath(__file__), "csv", at("peer.csv")]
        return cpu(me + [str(ROWS)], os.devnull) - cpu(me + ["0"], os.devnull)

    awk = ["mawk", "-f", os.path.join(HERE, "results_keep.awk"), at("log.txt"), at("log.txt")]
    sort = ["sort", "-s", "--parallel=1", "-S", "512M", "-k1,1", "-o", at("peer.sorted"), at("lines.txt")]
    def ours_sort():
        whole = cpu([bench, "sort", at("lines.txt"), at("ours.sorted")], os.devnull)
        return whole - cpu([bench, "load", at("lines.txt"), at("ours.loaded")], os.devnull)

    contests = [("E1 r_sort of the records / sort(1) by bytes", ours_sort, lambda: cpu(sort, os.devnull),
                 ("ours.sorted", "peer.sorted")),
                ("E1 the same with reading, records and writing",
                 lambda: cpu([bench, "sort", at("lines.txt"), at("ours.sorted")], os.devnull),
                 lambda: cpu(sort, os.devnull), ("ours.sorted", "peer.sorted")),
                ("E2 two passes over the log / mawk",
                 lambda: cpu([bench, "keep", at("log.txt"), at("ours.log")], os.devnull),
                 lambda: cpu(awk, at("peer.log")), ("ours.log", "peer.log")),
                ("F1 the delimited pair / Python's csv module", ours_csv, peer_csv, None)]
    for name, ours, peer, same in contests:
        ratios = []
        for _ in range(pairs + 1):  # the first pair warms up
            mine, theirs = ours(), peer()
            ratios.append(mine / theirs)
        if same and open(at(same[0]), "rb").read() != open(at(same[1]), "rb").read():
            sys.exit(name + ": the outputs differ")
        print("%-52s %.3f  (%.3f to %.3f; %.0f ms by %.0f ms)" % (name, statistics.median(ratios[1:]), min(ratios[1:]),
                                                                 max(ratios[1:]), mine * 1e3, theirs * 1e3))


if sys.argv[1] == "csv":
    write_csv(sys.argv[2], int(sys.argv[3]))
else:
    main()
