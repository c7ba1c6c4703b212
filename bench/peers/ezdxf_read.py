"""ezdxf on a drawing, for bench/run: read it, iterate its LINE and ARC
entities and chain them by end points per layer (0.0001 grid, a miss looked up
in the neighbouring cells). Prints one line for one run:
    zorbench tool=ezdxf wall_ms=W cpu_ms=C peak_kb=K check=CONTOURS
Debian's ezdxf is installed for Debian's own python:
    /usr/bin/python3 ezdxf_read.py DRAWING"""
import math
import resource
import sys
import time

import ezdxf

GRID = 1e4


def key(x, y):
    return (round(x * GRID), round(y * GRID))


def run(path):
    doc = ezdxf.readfile(path)
    layers = {}
    for e in doc.modelspace().query("LINE ARC"):
        if e.dxftype() == "LINE":
            a, b = e.dxf.start, e.dxf.end
            ends = ((a.x, a.y), (b.x, b.y))
        else:
            c, r = e.dxf.center, e.dxf.radius
            s, t = math.radians(e.dxf.start_angle), math.radians(e.dxf.end_angle)
            ends = ((c.x + r * math.cos(s), c.y + r * math.sin(s)), (c.x + r * math.cos(t), c.y + r * math.sin(t)))
        layers.setdefault(e.dxf.layer.lower(), []).append(ends)
    contours = 0
    for segments in layers.values():
        at = {}
        for i, ends in enumerate(segments):
            for j, (x, y) in enumerate(ends):
                at.setdefault(key(x, y), []).append((i, j))

        def joined(i, x, y):
            kx, ky = key(x, y)
            for dx, dy in ((0, 0), (-1, 0), (1, 0), (0, -1), (0, 1), (-1, -1), (-1, 1), (1, -1), (1, 1)):
                for p in at.get((kx + dx, ky + dy), ()):
                    if p[0] != i:
                        return p
            return None

        seen = [False] * len(segments)
        for start in range(len(segments)):
            if seen[start]:
                continue
            contours += 1
            i, j = start, 0
            while not seen[i]:
                seen[i] = True
                x, y = segments[i][1 - j]
                nxt = joined(i, x, y)
                if nxt is None:
                    break
                i, j = nxt
    return contours


def peak_kb():
    # VmHWM: ru_maxrss after exec starts from the parent's size at fork.
    with open("/proc/self/status") as status:
        for line in status:
            if line.startswith("VmHWM:"):
                return int(line.split()[1])
    return resource.getrusage(resource.RUSAGE_SELF).ru_maxrss


def main():
    t0, c0 = time.perf_counter(), time.process_time()
    contours = run(sys.argv[1])
    cpu, wall = (time.process_time() - c0) * 1000, (time.perf_counter() - t0) * 1000
    peak = peak_kb()
    print("zorbench tool=ezdxf wall_ms=%.3f cpu_ms=%.3f peak_kb=%d check=%d" % (wall, cpu, peak, contours))


main()
