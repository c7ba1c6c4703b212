"""zormodelio.read_stl timed like the C++ harnesses: one read in a process of
its own, reported as the line bench/driver.py reads
    zorbench tool=zormodelio wall_ms=W cpu_ms=C peak_kb=K check=VERTICES

    /usr/bin/python3 bench/python_stl.py [--module DIR] FILE
    /usr/bin/python3 bench/python_stl.py --compare --build build/bench [--facets N] [--runs N]

The module is looked for in DIR, else in the build folder's python/package.
--compare generates a binary STL torus with zorbench_inputs and times this
read against StlFile in C++ (zorbench_ours stl), in alternating rounds, and
prints the medians of CPU time and their ratio. Both builds should be
Release: cmake -S . -B build/bench -DCMAKE_BUILD_TYPE=Release
-DZOR_BUILD_BENCH=ON -DZOR_BUILD_PYTHON=ON.
"""
import argparse
import os
import re
import statistics
import subprocess
import sys
import tempfile
import time

HERE = os.path.dirname(os.path.abspath(__file__))
PYTHON = "/usr/bin/python3"


def peak_kb():
    with open("/proc/self/status") as status:
        for line in status:
            if line.startswith("VmHWM:"):
                return int(line.split()[1])
    return -1


def run_one(path, module_dir):
    sys.path.insert(0, module_dir)
    import zormodelio  # imported before the clock starts, like a linked library

    c0, w0 = time.process_time(), time.perf_counter()
    try:
        mesh = zormodelio.read_stl(path)
        check = len(mesh.points)
    except ValueError:
        check = -1
    w1, c1 = time.perf_counter(), time.process_time()
    print("zorbench tool=zormodelio wall_ms=%.3f cpu_ms=%.3f peak_kb=%d check=%d"
          % ((w1 - w0) * 1000, (c1 - c0) * 1000, peak_kb(), check))
    return 0 if check >= 0 else 1


def fields(text):
    found = re.search(r"^zorbench (.*)$", text, re.M)
    return dict(pair.split("=", 1) for pair in found.group(1).split()) if found else None


def compare(build, module_dir, facets, runs):
    with tempfile.TemporaryDirectory() as folder:
        out = subprocess.run([os.path.join(build, "bench", "zorbench_inputs"), folder,
                              "torus=stl-binary:%d" % facets], check=True, stdout=subprocess.PIPE, text=True).stdout
        path = fields(out)["path"]
        tools = {
            "StlFile (C++)": [os.path.join(build, "bench", "zorbench_ours"), "stl", path],
            "zormodelio.read_stl": [PYTHON, os.path.abspath(__file__), "--module", module_dir, path],
        }
        cpu = {name: [] for name in tools}
        checks = {name: set() for name in tools}
        names = list(tools)
        for r in range(runs):
            for name in names[r % 2:] + names[:r % 2]:
                f = fields(subprocess.run(tools[name], check=True, stdout=subprocess.PIPE, text=True).stdout)
                cpu[name].append(float(f["cpu_ms"]))
                checks[name].add(f["check"])
        print("%d-facet binary STL torus, %d runs each, median CPU time" % (facets, runs))
        for name in names:
            print("  %-22s %9.1f ms  (min %.1f, max %.1f)  vertices %s"
                  % (name, statistics.median(cpu[name]), min(cpu[name]), max(cpu[name]), ",".join(checks[name])))
        ratio = statistics.median(cpu[names[1]]) / statistics.median(cpu[names[0]])
        print("  ratio %.3f (goal: within 1.10)" % ratio)
        return 0 if checks[names[0]] == checks[names[1]] else 1


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("file", nargs="?")
    parser.add_argument("--module", help="folder holding the zormodelio module")
    parser.add_argument("--build", default=os.path.join(HERE, "..", "build", "bench"))
    parser.add_argument("--compare", action="store_true")
    parser.add_argument("--facets", type=int, default=1000000)
    parser.add_argument("--runs", type=int, default=5)
    args = parser.parse_args()
    module_dir = args.module or os.path.join(args.build, "python", "package")
    if args.compare:
        return compare(args.build, module_dir, args.facets, args.runs)
    if not args.file:
        parser.error("give a FILE or --compare")
    return run_one(args.file, module_dir)


if __name__ == "__main__":
    sys.exit(main())
