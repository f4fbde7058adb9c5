# Draws the example of docs/conventions.md. Called by scripts/plot-examples with `image` (file to write) and `type` (svg, png).
if (type eq "svg") { set terminal svg size 900,400 font "Helvetica,13" background rgb "white"
} else { set terminal pngcairo size 900,400 font "Helvetica,11" }
set output image
set angles radians

# Axes of a body that is turned by 30 degrees about X and then by 60 degrees about Z: row by row, as they are handed over.
u = pi / 6; v = pi / 3
array A[9] = [cos(v), sin(v), 0, -cos(u) * sin(v), cos(u) * cos(v), sin(u), sin(u) * sin(v), -sin(u) * cos(v), cos(u)]
# What the library reads from nine numbers, and what the desktop makes of the three angles.
phi = atan2(A[4], A[1]); theta = asin(-A[7]); psi = atan2(A[8], A[9])
Xx(P, T, S) = cos(P) * cos(T)
Xy(P, T, S) = sin(S) * sin(P) * cos(T) - cos(S) * sin(T)
Xz(P, T, S) = cos(S) * sin(P) * cos(T) + sin(S) * sin(T)
Yx(P, T, S) = cos(P) * sin(T)
Yy(P, T, S) = sin(S) * sin(P) * sin(T) + cos(S) * cos(T)
Yz(P, T, S) = cos(S) * sin(P) * sin(T) - sin(S) * cos(T)
Zx(P, T, S) = -sin(P)
Zy(P, T, S) = sin(S) * cos(P)
Zz(P, T, S) = cos(S) * cos(P)

set multiplot layout 1,2
unset border; unset tics; unset colorbox
set view 65, 35, 1.9; set view equal xyz
set xrange [-1:1]; set yrange [-1:1]; set zrange [-0.6:1]; set xyplane at 0
set key bottom center horizontal samplen 3
names = "x y z"
color(i) = int(word("0xee6677 0x228833 0x4477aa", i))

do for [panel = 1:2] {
    # The frame that arrives: with the two angles in each other's places the second time.
    P = panel == 1 ? phi : theta
    T = panel == 1 ? theta : phi
    array F[9] = [Xx(P, T, psi), Xy(P, T, psi), Xz(P, T, psi), Yx(P, T, psi), Yy(P, T, psi), Yz(P, T, psi), \
                  Zx(P, T, psi), Zy(P, T, psi), Zz(P, T, psi)]
    trace = 0
    do for [k = 1:9] { trace = trace + A[k] * F[k] }
    away = trace >= 3 ? 0 : acos((trace - 1) / 2) * 180 / pi
    set title panel == 1 ? sprintf("The axes themselves handed over: %.1f degrees away", away) \
                         : sprintf("Through KinoraVeltrixRotationFor: %.1f degrees away", away)
    unset arrow; unset label
    do for [i = 1:3] {
        set arrow from 0,0,0 to A[3*i-2],A[3*i-1],A[3*i] nohead lw 9 lc rgb color(i) + 0xb0000000
        set arrow from 0,0,0 to F[3*i-2],F[3*i-1],F[3*i] filled size 0.08,18 lw 2 lc rgb color(i)
        set label word(names, i) at 1.12*F[3*i-2],1.12*F[3*i-1],1.12*F[3*i] center tc rgb color(i)
    }
    splot NaN with lines lw 9 lc rgb 0xb0000000 title "wanted", NaN with lines lw 2 lc rgb "#000000" title "in the desktop"
}
unset multiplot
