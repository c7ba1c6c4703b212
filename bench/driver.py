"""The benchmark driver behind bench/run: generates the inputs, runs our
readers, the peers and the raw read limit on each of them in alternating
rounds, one process per run, and prints one table of medians.

Every harness prints one line per run (bench/harness/Measure.h):
    zorbench tool=NAME wall_ms=W cpu_ms=C peak_kb=K check=N
Standard library only, for Debian's /usr/bin/python3 (where python3-ezdxf is).

    /usr/bin/python3 bench/driver.py --build build/bench [--quick] [--only REGEX] [--keep-inputs]
"""
import argparse
import datetime
import json
import os
import re
import shutil
import statistics
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
PYTHON = "/usr/bin/python3"  # Debian's, for which python3-ezdxf is installed


class Input:
    """One generated file: kind and size for zorbench_inputs (size None:
    left out of that mode), what its items are called."""

    def __init__(self, name, kind, full, quick, items, title):
        self.name, self.kind, self.full, self.quick = name, kind, full, quick
        self.items, self.title = items, title
        self.path = None
        self.bytes = self.count = self.detail = 0


class Tool:
    """One program run on an input. role: ours, peer (compared with), raw
    (the raw read limit). argv(build, path) gives the command line."""

    def __init__(self, label, role, argv, check="", note="", slow=False, may_fail=False):
        self.label, self.role, self.argv = label, role, argv
        self.check, self.note, self.slow, self.may_fail = check, note, slow, may_fail


def harness(name, *args):
    return lambda build, path: [os.path.join(build, "bench", name), *args, path]


RAW = Tool("raw read limit", "raw", harness("zorbench_raw"), "lines", "1 MiB chunks, line ends counted")

INPUTS = [
    # STL: the facets of a torus, every vertex shared by six facets.
    Input("stl-binary-200k", "stl-binary", 200000, 200000, "facets", "binary STL, torus"),
    Input("stl-ascii-200k", "stl-ascii", 200000, 200000, "facets", "ASCII STL, torus"),
    Input("stl-binary-1m", "stl-binary", 1000000, None, "facets", "binary STL, torus"),
    Input("stl-ascii-1m", "stl-ascii", 1000000, None, "facets", "ASCII STL, torus"),
    # Hostile STL files, each beside the clean torus of the same size
    # (BenchInputs.h, write_adversarial_stl): our reader only.
    *[Input("stl-hostile-" + kind, "stl-hostile-" + kind, 1000000, 200000, "facets", title) for kind, title in [
        ("nan-vertex", "torus, first vertex x NaN"),
        ("nan-normal", "torus, first normal x NaN"),
        ("nan-1pct", "torus, NaN in 1% of the facets"),
        ("inf-third", "torus, a third of the values ±inf"),
        ("chained-tiny", "grid, x in [0, 1e-7) 1e-9 apart"),
        ("random-bytes", "random bytes, the torus file's size"),
    ]],
    Input("dxf", "dxf", 200000, 50000, "entities", "DXF, LINE/ARC on 10 layers, closed chains"),
    Input("objectfile", "objectfile", 100 * 1000 * 1000, 20 * 1000 * 1000, "triangles",
          "object file of mesh records"),
    Input("extrusion", "extrusion", 1000000, 200000, "segments", "native extrusion file"),
    Input("arcs", "arcs", 100000, 100000, "arcs", "profile of arcs, stepped at 0.001"),
    Input("tools", "tools", 10000, 10000, "tools", "tool library XML"),
]

# The tools run on each kind of input. Our STL reader plugs in as the case
# "stl" of zorbench_ours (a file of bench/harness registering it); until it
# is built, its row says so.
STL_TOOLS = [
    Tool("ZORModelIo StlFile", "ours", harness("zorbench_ours", "stl"), "vertices"),
    Tool("zormodelio.read_stl (Python)", "ours",
         lambda build, path: [PYTHON, os.path.join(HERE, "python_stl.py"), "--module",
                              os.path.join(build, "python", "package"), path],
         "vertices", "StlFile into numpy arrays, the library's buffers handed over"),
    Tool("admesh", "peer", harness("zorbench_admesh"), "vertices", "open + exact neighbours + shared vertices"),
    Tool("assimp", "peer", harness("zorbench_assimp", "stl"), "vertices",
         "normals removed + JoinIdenticalVertices"),
    Tool("OpenMesh", "peer", harness("zorbench_openmesh"), "vertices", "read_mesh into a TriMesh"),
    RAW,
]
HOSTILE_TOOLS = [Tool("ZORModelIo StlFile", "ours", harness("zorbench_ours", "stl"), "vertices",
                      "hostile files: a failed read (-1 vertices) is timed like any other", may_fail=True), RAW]
TOOLS = {
    "stl-binary": STL_TOOLS,
    "stl-ascii": STL_TOOLS,
    **{"stl-hostile-" + k: HOSTILE_TOOLS for k in
       ["nan-vertex", "nan-normal", "nan-1pct", "inf-third", "chained-tiny", "random-bytes"]},
    "dxf": [
        Tool("ZORModelIo ReadDxf", "ours", harness("zorbench_ours", "dxf"), "files",
             "read, chain, write one profile per layer"),
        Tool("ZORModelIo read + chain", "ours", harness("zorbench_ours", "dxf-chain"), "segments chained",
             "parse and chain every layer, nothing written"),
        Tool("assimp", "peer", harness("zorbench_assimp", "dxf"), "vertices",
             "drops every ARC, chains nothing"),
        Tool("ezdxf (python)", "peer", lambda build, path: [PYTHON, os.path.join(HERE, "peers", "ezdxf_read.py"), path],
             "contours", "read, iterate LINE and ARC, chain by end points", slow=True),
        RAW,
    ],
    "objectfile": [
        Tool("ZORModelIo ReadType/ReadMesh", "ours", harness("zorbench_ours", "objectfile"), "triangles"),
        RAW,
    ],
    "extrusion": [
        Tool("ZORModelIo CMWZORExtrude::ResadFile", "ours", harness("zorbench_ours", "extrusion"), "segments"),
        RAW,
    ],
    "arcs": [
        Tool("ZORModelIo ResadFile + GetArcStep", "ours", harness("zorbench_ours", "arcsteps"), "points"),
        RAW,
    ],
    "tools": [
        Tool("ZORModelIo API_IsXml + API_ReadList", "ours", harness("zorbench_ours", "toollist"), "tokens",
             "load, then walk every token"),
        Tool("pugixml parse", "peer", harness("zorbench_pugixml"), "tools", "parse only: the lower bound"),
        RAW,
    ],
}

LINE = re.compile(r"^zorbench (.*)$", re.M)


def fields(text):
    """The key=value pairs of the last zorbench line of text."""
    found = LINE.findall(text)
    if not found:
        return None
    return dict(pair.split("=", 1) for pair in found[-1].split())


def note(message):
    print(message, file=sys.stderr, flush=True)


def generate(build, folder, inputs, quick):
    requests = ["%s=%s:%d" % (i.name, i.kind, i.quick if quick else i.full) for i in inputs]
    out = subprocess.run([os.path.join(build, "bench", "zorbench_inputs"), folder, *requests],
                         check=True, stdout=subprocess.PIPE, text=True).stdout
    by_name = {i.name: i for i in inputs}
    for line in LINE.findall(out):
        f = dict(pair.split("=", 1) for pair in line.split())
        i = by_name[f["input"]]
        i.path, i.bytes, i.count, i.detail = f["path"], int(f["bytes"]), int(f["items"]), int(f["detail"])


class Result:
    def __init__(self, tool):
        self.tool = tool
        self.cpu, self.wall, self.peak, self.checks = [], [], [], set()
        self.error = None
        self.unsupported = False

    def median(self, values):
        return statistics.median(values) if values else None


def run_once(build, tool, path, result, timeout):
    argv = tool.argv(build, path)
    if not os.path.exists(argv[0]):
        result.error = "not built (its package is missing)"
        return
    try:
        done = subprocess.run(argv, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, timeout=timeout)
    except subprocess.TimeoutExpired:
        result.error = "over %d s" % timeout
        return
    f = fields(done.stdout)
    if f is not None and f.get("unsupported") == "1":
        result.unsupported = True
        return
    if f is None or (done.returncode != 0 and not (tool.may_fail and f.get("check") == "-1")):
        last = (done.stderr.strip().splitlines() or ["exit %d" % done.returncode])[-1]
        result.error = "failed: " + last[:80]
        return
    result.cpu.append(float(f["cpu_ms"]))
    result.wall.append(float(f["wall_ms"]))
    result.peak.append(int(f["peak_kb"]))
    result.checks.add(int(f["check"]))


def measure(build, item, runs, slow_runs, timeout):
    """Alternating rounds: every tool once per round, the order turned by one
    each round, so that load from elsewhere falls on all tools alike."""
    tools = TOOLS[item.kind]
    results = [Result(t) for t in tools]
    subprocess.run(RAW.argv(build, item.path), stdout=subprocess.DEVNULL)  # in the page cache first
    for r in range(runs):
        order = results[r % len(results):] + results[:r % len(results)]
        for res in order:
            if res.error or res.unsupported or (res.tool.slow and r >= slow_runs):
                continue
            run_once(build, res.tool, item.path, res, timeout)
        note("  %s: round %d of %d" % (item.name, r + 1, runs))
    return results


def number(n):
    return "{:,}".format(n)


def si(value):
    for unit, scale in (("G", 1e9), ("M", 1e6), ("k", 1e3)):
        if value >= scale:
            return "%.3g %s" % (value / scale, unit)
    return "%.3g" % value


def ms(value):
    return "%.1f" % value if value < 100 else "%.0f" % value


def table(rows, header):
    widths = [max(len(str(r[c])) for r in rows + [header]) for c in range(len(header))]
    out = ["| " + " | ".join(h.ljust(w) for h, w in zip(header, widths)) + " |",
           "|" + "|".join("-" * (w + 2) for w in widths) + "|"]
    for r in rows:
        out.append("| " + " | ".join(str(c).ljust(w) for c, w in zip(r, widths)) + " |")
    return "\n".join(out)


def describe(item):
    return "%s: %s %s, %.1f MB" % (item.name, number(item.count), item.items, item.bytes / 1e6)


def report(measured):
    header = ["input", "tool", "CPU ms median", "min–max", "wall ms", "MB/s", "items/s", "peak MB",
              "× fastest peer", "% of raw MB/s", "result"]
    rows, notes = [], {}
    for item, results in measured:
        peers = [r for r in results if r.tool.role == "peer" and r.cpu]
        fastest = min((r.median(r.cpu) for r in peers), default=None)
        raw = next((r.median(r.cpu) for r in results if r.tool.role == "raw" and r.cpu), None)
        first = True
        for r in results:
            name = describe(item) if first else ""
            first = False
            if r.tool.note:
                key = "%s: %s" % (r.tool.label, r.tool.note)
                notes.setdefault(key, []).append(item.name)
            if not r.cpu:
                why = "not built on this branch" if r.unsupported else (r.error or "no run")
                rows.append([name, r.tool.label, "-", "-", "-", "-", "-", "-", "-", "-", why])
                continue
            t = r.median(r.cpu)
            seconds = max(t, 1e-3) / 1000
            items = "-" if r.tool.role == "raw" else si(item.count / seconds)
            checks = ", ".join(number(c) for c in sorted(r.checks)) + " " + r.tool.check
            rows.append([
                name, r.tool.label, ms(t), "%s–%s" % (ms(min(r.cpu)), ms(max(r.cpu))), ms(r.median(r.wall)),
                "%.0f" % (item.bytes / 1e6 / seconds), items, "%.1f" % (r.median(r.peak) / 1024),
                "%.2f" % (t / fastest) if fastest else "-", "%.1f%%" % (100 * raw / t) if raw else "-",
                checks.strip(),
            ])
    legend = ["- %s (%s)" % (key, ", ".join(names)) for key, names in notes.items()]
    return table(rows, header) + "\n\nWhat each tool does:\n" + "\n".join(legend)


def goals(measured):
    lines = []

    def find(kind_or_name, label):
        for item, results in measured:
            if item.name == kind_or_name or item.kind == kind_or_name:
                for r in results:
                    if r.tool.label == label:
                        return item, r
        return None, None

    def verdict(ok):
        return "met" if ok else "MISSED"

    clean = {}
    for item, results in measured:
        if item.kind == "stl-binary" and results[0].cpu:
            clean[item.count] = results[0]
    for item, results in measured:
        if item.kind.startswith("stl-hostile-"):
            ours, torus = results[0], clean.get(item.count)
            if not ours.cpu or torus is None:
                lines.append("- STL %s: not measured beside a clean torus of %s facets" % (item.name, number(item.count)))
                continue
            ratio = ours.median(ours.cpu) / torus.median(torus.cpu)
            lines.append("- STL %s: %.2f × the clean torus's time, peak %.1f MB vs %.1f MB (goal ≤ 2: %s)" % (
                item.name, ratio, ours.median(ours.peak) / 1024, torus.median(torus.peak) / 1024,
                verdict(ratio <= 2)))
            continue
        if not item.kind.startswith("stl"):
            continue
        ours = results[0]
        peers = [r for r in results if r.tool.role == "peer" and r.cpu]
        if not ours.cpu or not peers:
            lines.append("- STL %s: not measured (%s)" % (
                item.name, "our STL reader is not built on this branch" if ours.unsupported else ours.error))
            continue
        best = min(peers, key=lambda r: r.median(r.cpu))
        ratio = ours.median(ours.cpu) / best.median(best.cpu)
        memory = ours.median(ours.peak) <= best.median(best.peak)
        lines.append("- STL %s: %.2f × %s's time (goal ≤ 0.5: %s), peak %.1f MB vs %.1f MB (goal ≤: %s)" % (
            item.name, ratio, best.tool.label, verdict(ratio <= 0.5), ours.median(ours.peak) / 1024,
            best.median(best.peak) / 1024, verdict(memory)))
    for item, results in measured:
        if item.kind != "stl-binary":
            continue
        cpp, py = results[0], next((r for r in results if r.tool.label.startswith("zormodelio")), None)
        if cpp.cpu and py and py.cpu:
            ratio = py.median(py.cpu) / cpp.median(cpp.cpu)
            lines.append("- Python %s: read_stl takes %.2f × StlFile's time in C++ (goal ≤ 1.10: %s)" % (
                item.name, ratio, verdict(ratio <= 1.10)))
    item, ours = find("dxf", "ZORModelIo ReadDxf")
    _, assimp = find("dxf", "assimp")
    _, ezdxf = find("dxf", "ezdxf (python)")
    if ours and ours.cpu:
        t = ours.median(ours.cpu)
        if assimp and assimp.cpu:
            ratio = t / assimp.median(assimp.cpu)
            lines.append("- DXF: ReadDxf takes %.2f × assimp's time, reading the arcs assimp drops (goal ≤ 0.5: %s)"
                         % (ratio, verdict(ratio <= 0.5)))
        if ezdxf and ezdxf.cpu:
            speed = ezdxf.median(ezdxf.cpu) / t
            lines.append("- DXF: ReadDxf is %.0f × faster than ezdxf (goal ≥ 50: %s)" % (speed, verdict(speed >= 50)))
    item, ours = find("objectfile", "ZORModelIo ReadType/ReadMesh")
    _, raw = find("objectfile", RAW.label)
    if ours and ours.cpu and raw and raw.cpu:
        share = raw.median(raw.cpu) / ours.median(ours.cpu)
        lines.append("- Object file: %.0f MB/s, %.1f%% of the raw read limit's %.0f MB/s (goal ≥ 25%%: %s)" % (
            item.bytes / 1e3 / ours.median(ours.cpu), 100 * share, item.bytes / 1e3 / raw.median(raw.cpu),
            verdict(share >= 0.25)))
    item, ours = find("tools", "ZORModelIo API_IsXml + API_ReadList")
    _, pugi = find("tools", "pugixml parse")
    if ours and ours.cpu and pugi and pugi.cpu:
        ratio = ours.median(ours.cpu) / pugi.median(pugi.cpu)
        lines.append("- Tool library: the walk of %s tools takes %.2f × pugixml's parse (goal < 2: %s)" % (
            number(item.count), ratio, verdict(ratio < 2)))
    return "\n".join(lines)


def micro(build, quick):
    program = os.path.join(build, "bench", "zorbench_micro")
    out = subprocess.run([program, "--benchmark_format=json",
                          "--benchmark_min_time=%s" % ("0.05" if quick else "0.5")],
                         check=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True).stdout
    rows = []
    for b in json.loads(out)["benchmarks"]:
        per = {"ns": 1e-6, "us": 1e-3, "ms": 1.0, "s": 1e3}[b["time_unit"]]
        extra = ", ".join("%s %.4g" % (k, b[k]) for k in ("points/arc", "tokens") if k in b)
        rows.append([b["name"], "%.3f" % (b["cpu_time"] * per), si(b.get("items_per_second", 0)) if
                     "items_per_second" in b else "-",
                     "%.0f" % (b["bytes_per_second"] / 1e6) if "bytes_per_second" in b else "-", extra])
    return table(rows, ["inner loop", "CPU ms per iteration", "items/s", "MB/s", ""])


def machine():
    cores = os.cpu_count()
    with open("/proc/meminfo") as f:
        total = int(f.readline().split()[1]) / 1024 / 1024
    model = ""
    with open("/proc/cpuinfo") as f:
        for line in f:
            if line.startswith("model name"):
                model = line.split(":", 1)[1].strip()
                break
    return "%d cores (%s), %.1f GiB memory" % (cores, model, total)


def load():
    return "%.2f %.2f %.2f" % os.getloadavg()


def main():
    ap = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    ap.add_argument("--build", required=True, help="the build folder configured with -DZOR_BUILD_BENCH=ON")
    ap.add_argument("--quick", action="store_true", help="smaller inputs, fewer runs (under two minutes)")
    ap.add_argument("--runs", type=int, help="runs per tool and input (default 5, quick 3)")
    ap.add_argument("--only", help="only the inputs whose name matches this regular expression")
    ap.add_argument("--no-micro", action="store_true", help="leave out the inner-loop benchmarks")
    ap.add_argument("--keep-inputs", action="store_true", help="keep the generated inputs and print their folder")
    args = ap.parse_args()
    runs = args.runs or (3 if args.quick else 5)
    slow_runs = 1 if args.quick else 3  # ezdxf takes seconds a run
    inputs = [i for i in INPUTS if (i.quick if args.quick else i.full) is not None
              and (args.only is None or re.search(args.only, i.name))]
    started = datetime.datetime.now()
    load_before = load()
    folder = tempfile.mkdtemp(prefix="zorbench-")
    try:
        note("generating %d inputs in %s" % (len(inputs), folder))
        generate(args.build, folder, inputs, args.quick)
        measured = []
        for item in inputs:
            note("%s (%.1f MB)" % (item.name, item.bytes / 1e6))
            measured.append((item, measure(args.build, item, runs, slow_runs, timeout=600)))
        micro_table = None if args.no_micro else micro(args.build, args.quick)
    finally:
        if args.keep_inputs:
            note("inputs kept in " + folder)
        else:
            shutil.rmtree(folder, ignore_errors=True)
    took = (datetime.datetime.now() - started).total_seconds()
    commit = subprocess.run(["git", "-C", HERE, "rev-parse", "--short", "HEAD"], stdout=subprocess.PIPE,
                            stderr=subprocess.DEVNULL, text=True).stdout.strip()
    print("ZORModelIo benchmarks%s, %s, commit %s" % (" (--quick)" if args.quick else "",
                                                      started.strftime("%Y-%m-%d %H:%M"), commit or "?"))
    print("Machine: %s; load average %s before, %s after; %.0f s in all." % (machine(), load_before, load(), took))
    print("Medians of %d alternating runs (ezdxf: %d), one process per run, files in the page cache. Times are"
          " CPU time (user + system) of the read alone; MB/s and items/s come from them. Peak MB is the"
          " process's peak resident memory. × fastest peer: time over the fastest peer's; %% of raw MB/s:"
          " the raw read limit's time over this one's." % (runs, slow_runs))
    print()
    print(report(measured))
    print()
    print("Goals:")
    print(goals(measured))
    if micro_table:
        print()
        print("Inner loops (Google Benchmark, bench/MicroBench.cpp):")
        print(micro_table)


if __name__ == "__main__":
    main()
