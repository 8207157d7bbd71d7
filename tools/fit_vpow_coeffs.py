#!/usr/bin/env python3
"""Derives the polynomial coefficients of vpowq_f32 (Common/src/Ne10_math_Light).

vpowq_f32 computes a^b as 2^(b*log2(a)) with two short polynomials:

  log2(m) ~ (m - 1) * P5(m)     for m in [1, 2), P5 of degree 5
  2^f     ~ Q2(f)               for f in [0, 1), Q2 of degree 2

The leading coefficients are fixed (-0.034436006 for P5, 0.33718944 for Q2);
the remaining ones are fitted here by a discrete Remez exchange on a dense
grid: absolute error for log2 (an error d in log2(a) becomes a relative error
of about d*b*ln2 in the power), relative error for 2^f.

Run: python3 tools/fit_vpow_coeffs.py   (plain Python 3, no packages needed)
"""
import math

LOG2_LEADING = -0.034436006
EXP2_LEADING = 0.33718944


def solve(a, y):
    """Gaussian elimination with partial pivoting on a small dense system."""
    n = len(y)
    m = [row[:] + [y[i]] for i, row in enumerate(a)]
    for col in range(n):
        piv = max(range(col, n), key=lambda r: abs(m[r][col]))
        m[col], m[piv] = m[piv], m[col]
        for r in range(col + 1, n):
            f = m[r][col] / m[col][col]
            for c in range(col, n + 1):
                m[r][c] -= f * m[col][c]
    x = [0.0] * n
    for r in range(n - 1, -1, -1):
        x[r] = (m[r][n] - sum(m[r][c] * x[c] for c in range(r + 1, n))) / m[r][r]
    return x


def remez(basis, target, weight, lo, hi, grid_points=20001, iterations=40):
    """Minimises max |weight(x) * (sum c_j basis_j(x) - target(x))| over a grid."""
    n = len(basis)
    grid = [lo + (hi - lo) * i / (grid_points - 1) for i in range(grid_points)]
    # Chebyshev-like starting reference of n + 1 points.
    ref = [lo + (hi - lo) * (1 - math.cos(math.pi * (k + 0.5) / (n + 1))) / 2
           for k in range(n + 1)]
    coeffs = [0.0] * n
    for _ in range(iterations):
        a = [[b(x) for b in basis] + [(-1) ** k / weight(x)] for k, x in enumerate(ref)]
        sol = solve(a, [target(x) for x in ref])
        coeffs = sol[:n]
        err = [weight(x) * (sum(c * b(x) for c, b in zip(coeffs, basis)) - target(x))
               for x in grid]
        # Local extrema of the error, then one point per run of equal sign.
        ext = [i for i in range(len(grid))
               if (i == 0 or abs(err[i]) >= abs(err[i - 1]))
               and (i == len(grid) - 1 or abs(err[i]) >= abs(err[i + 1]))
               and err[i] != 0.0]
        runs = []
        for i in ext:
            if runs and (err[i] > 0) == (err[runs[-1]] > 0):
                if abs(err[i]) > abs(err[runs[-1]]):
                    runs[-1] = i
            else:
                runs.append(i)
        while len(runs) > n + 1:  # drop the smaller end
            if abs(err[runs[0]]) < abs(err[runs[-1]]):
                runs.pop(0)
            else:
                runs.pop()
        if len(runs) < n + 1:
            break
        ref = [grid[i] for i in runs]
    max_err = max(abs(e) for e in err)
    return coeffs, max_err


def main():
    # log2(m) - LOG2_LEADING*m^5*(m-1) ~ (m-1) * (c0 + c1 m + ... + c4 m^4)
    basis = [lambda m, j=j: (m - 1) * m ** j for j in range(5)]
    c, e = remez(basis, lambda m: math.log2(m) - LOG2_LEADING * m ** 5 * (m - 1),
                 lambda m: 1.0, 1.0, 2.0)
    print("log2 on [1,2): (m-1) * P5(m), P5 coefficients c0..c5:")
    for v in c + [LOG2_LEADING]:
        print("  %.8e" % v)
    print("  max abs error in log2: %.3e" % e)

    basis = [lambda f: 1.0, lambda f: f]
    c, e = remez(basis, lambda f: 2.0 ** f - EXP2_LEADING * f * f,
                 lambda f: 2.0 ** -f, 0.0, 1.0)
    print("2^f on [0,1): Q2 coefficients c0..c2:")
    for v in c + [EXP2_LEADING]:
        print("  %.8e" % v)
    print("  max relative error: %.3e" % e)


if __name__ == "__main__":
    main()
