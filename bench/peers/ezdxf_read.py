"""ezdxf on a drawing, for bench/dxf-compare: read, iterate LINE and ARC,
chain them by end points (1e-4 grid) per layer. Prints the best of N runs in CPU time.
    /usr/bin/python3 ezdxf_read.py DRAWING [N]"""
import math
import sys
import time

import ezdxf


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
                at.setdefault((round(x * 1e4), round(y * 1e4)), []).append((i, j))
        seen = [False] * len(segments)
        for start in range(len(segments)):
            if seen[start]:
                continue
            contours += 1
            i, j = start, 0
            while not seen[i]:
                seen[i] = True
                x, y = segments[i][1 - j]
                nxt = [p for p in at[(round(x * 1e4), round(y * 1e4))] if p[0] != i]
                if not nxt:
                    break
                i, j = nxt[0]
    return contours


def main():
    path = sys.argv[1]
    runs = int(sys.argv[2]) if len(sys.argv) > 2 else 1
    best, best_wall, contours = 1e300, 0.0, 0
    for _ in range(runs):
        t0, c0 = time.perf_counter(), time.process_time()
        contours = run(path)
        cpu, wall = (time.process_time() - c0) * 1000, (time.perf_counter() - t0) * 1000
        if cpu < best:
            best, best_wall = cpu, wall
    print("ezdxf %.1f ms CPU, %.1f ms wall (%d contours)" % (best, best_wall, contours))


main()
