#!/usr/bin/env python3
"""Designs the two time-domain high-pass kernels of the equaliser and writes
Equalizer/code/src/hpf_tables.cpp together with the sixteen Q8 gain tables of
the frequency-domain high-pass.

Each kernel is a band-rejection of the lowest frequencies: a windowed sinc
low-pass subtracted from a unit impulse at the centre tap,

    h[M + d] = delta[d] - 2 fc sinc(2 fc d) w(d),   d = -M .. M,

so the centre tap is 1 - 2 fc and fixes the cutoff fc. The window is a
four-term cosine sum over the kernel,

    w(d) = a0 + a1 cos(pi d / M) + a2 cos(2 pi d / M) + a3 cos(3 pi d / M),

with w(0) = 1. Its three free coefficients are solved (a 3x3 linear system)
so that the kernel passes exactly through three reference taps besides the
centre: the tap next to the centre, one at half the span and the end tap.
Both windows come out positive and falling from the centre to the ends.

The taps are computed in double and stored as the nearest 32-bit floats.

Usage:
    design_hpf_fir.py                 print the generated source
    design_hpf_fir.py --write FILE    write it to FILE
    design_hpf_fir.py --check FILE    exit 1 unless FILE holds exactly it
"""

import math
import struct
import sys

# (name, half span M, reference taps as {offset from the centre: value}).
# The values carry the precision they are checked to.
KERNELS = (
    ("hpf_120Hz_coeff", 128,
     {0: "0.98997074", 1: "-0.0100269", 64: "-0.0034888", 128: "0.00015538"}),
    ("hpf_500Hz_coeff", 64,
     {0: "0.9439522", 1: "-0.0557232", 32: "0.0030665", 64: "0.000055328"}),
)

# Q8 gains of the frequency-domain high-pass: every bin is 256 (unity)
# except a prefix at the lowest bins.
HPF_TABLE_BINS = 129
HPF_PREFIXES = (
    ("48k", "80", [128]),
    ("48k", "120", [128]),
    ("48k", "150", [128]),
    ("48k", "500", [0, 0, 0]),
    ("32k", "80", [128]),
    ("32k", "120", [128]),
    ("32k", "150", [64, 128]),
    ("32k", "500", [0, 0, 0, 0]),
    ("16k", "80", [1, 1]),
    ("16k", "120", [32, 64, 128]),
    ("16k", "150", [16, 32, 64, 128]),
    ("16k", "500", [0] * 8),
    ("8k", "80", [32, 64, 128]),
    ("8k", "120", [8, 16, 32, 64, 128]),
    ("8k", "150", [4, 8, 16, 32, 64, 128]),
    ("8k", "500", [0] * 16 + [25]),
)


def to_f32(x):
    return struct.unpack("f", struct.pack("f", x))[0]


def f32_literal(x):
    """Shortest decimal text that reads back as the same 32-bit float."""
    for digits in range(6, 10):
        text = "%.*g" % (digits, x)
        if to_f32(float(text)) == x:
            break
    if "e" not in text and "." not in text:
        text += ".0"
    return text + "f"


def solve(a, b):
    """Gauss-Jordan elimination with partial pivoting."""
    n = len(b)
    m = [list(a[i]) + [b[i]] for i in range(n)]
    for i in range(n):
        p = max(range(i, n), key=lambda r: abs(m[r][i]))
        m[i], m[p] = m[p], m[i]
        for r in range(n):
            if r != i:
                f = m[r][i] / m[i][i]
                m[r] = [m[r][k] - f * m[i][k] for k in range(n + 1)]
    return [m[i][n] / m[i][i] for i in range(n)]


def design(half_span, ref):
    """Returns the 2M+1 taps in double and the window coefficients."""
    fc = (1.0 - float(ref[0])) / 2.0

    def sinc_lp(d):
        return 2.0 * fc if d == 0 else math.sin(2.0 * math.pi * fc * d) / (math.pi * d)

    offsets = [d for d in ref if d != 0]
    terms = (1, 2, 3)
    # w(d) - 1 = sum_k a_k (cos(k pi d / M) - 1); the tap fixes w(d).
    rows = [[math.cos(k * math.pi * d / half_span) - 1.0 for k in terms] for d in offsets]
    rhs = [-float(ref[d]) / sinc_lp(d) - 1.0 for d in offsets]
    coeff = solve(rows, rhs)

    def window(d):
        return 1.0 + sum(c * (math.cos(k * math.pi * d / half_span) - 1.0)
                         for c, k in zip(coeff, terms))

    taps = []
    for n in range(2 * half_span + 1):
        d = abs(n - half_span)
        taps.append((1.0 if d == 0 else 0.0) - sinc_lp(d) * window(d))
    return taps, [1.0 - sum(coeff)] + coeff, window


def magnitude(taps, f):
    re = sum(t * math.cos(2.0 * math.pi * f * n) for n, t in enumerate(taps))
    im = sum(t * math.sin(2.0 * math.pi * f * n) for n, t in enumerate(taps))
    return math.hypot(re, im)


def check_kernel(name, half_span, ref, taps32, window):
    ok = True
    for n in range(len(taps32)):
        if taps32[n] != taps32[-1 - n]:
            print("%s: tap %d breaks symmetry" % (name, n), file=sys.stderr)
            ok = False
    for d, text in ref.items():
        # The reference value names tap M - d; its precision is that of its text.
        value = taps32[half_span - d]
        digits = len(text.lstrip("-0.").replace(".", ""))
        if float("%.*g" % (digits, value)) != float(text):
            print("%s: tap %d is %.9g, expected %s" % (name, half_span - d, value, text),
                  file=sys.stderr)
            ok = False
    ws = [window(d) for d in range(half_span + 1)]
    if min(ws) <= 0.0 or any(ws[i] < ws[i + 1] for i in range(half_span)):
        print("%s: window is not positive and falling" % name, file=sys.stderr)
        ok = False
    return ok


def describe(name, half_span, taps32, coeff):
    lines = ["// %s: %d taps, centre %d. Window coefficients a0..a3 = %s." %
             (name, len(taps32), half_span, ", ".join("%.9f" % c for c in coeff)),
             "// DC gain %.6f; magnitude at fs/2 %.6f." %
             (sum(taps32), magnitude(taps32, 0.5))]
    return lines


def emit_float_array(name, taps32):
    lines = ["const float %s[%d] = {" % (name, len(taps32))]
    per_line = 6
    for i in range(0, len(taps32), per_line):
        chunk = ", ".join(f32_literal(t) for t in taps32[i:i + per_line])
        lines.append("    " + chunk + ",")
    lines.append("};")
    return lines


def emit_short_table(rate, cutoff, prefix):
    values = prefix + [256] * (HPF_TABLE_BINS - len(prefix))
    lines = ["const short HpfTable_fs%s_%sHz[HPF_TABLE_BINS] = {" % (rate, cutoff)]
    per_line = 16
    for i in range(0, len(values), per_line):
        lines.append("    " + ", ".join(str(v) for v in values[i:i + per_line]) + ",")
    lines.append("};")
    return lines


def generate():
    out = [
        "// Generated by tools/design_hpf_fir.py; edit the program, not this file.",
        "//",
        "// Q8 gain tables of the frequency-domain high-pass (256 = unity, index =",
        "// bin of the 256-point spectrum) and the two time-domain high-pass kernels:",
        "// windowed-sinc low-passes subtracted from a unit impulse.",
        "#include \"hpf_tables.h\"",
        "",
        "extern \"C\" {",
        "",
    ]
    ok = True
    for rate, cutoff, prefix in HPF_PREFIXES:
        out += emit_short_table(rate, cutoff, prefix)
        out.append("")
    for name, half_span, ref in KERNELS:
        taps, coeff, window = design(half_span, ref)
        taps32 = [to_f32(t) for t in taps]
        ok = check_kernel(name, half_span, ref, taps32, window) and ok
        out += describe(name, half_span, taps32, coeff)
        out += emit_float_array(name, taps32)
        out.append("")
    out.append("}  // extern \"C\"")
    return "\n".join(out) + "\n", ok


def main(argv):
    text, ok = generate()
    if not ok:
        return 1
    if len(argv) == 3 and argv[1] == "--write":
        with open(argv[2], "w") as f:
            f.write(text)
        return 0
    if len(argv) == 3 and argv[1] == "--check":
        with open(argv[2]) as f:
            same = f.read() == text
        print("%s: %s" % (argv[2], "up to date" if same else "differs from the design"))
        return 0 if same else 1
    if len(argv) == 1:
        sys.stdout.write(text)
        return 0
    print(__doc__, file=sys.stderr)
    return 2


if __name__ == "__main__":
    sys.exit(main(sys.argv))
