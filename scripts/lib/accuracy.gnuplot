# Called by scripts/accuracy with `table` (the CSV file) and `image` (the SVG file to write).
set terminal svg size 1000,780 font "Helvetica,13" background rgb "white"
set output image
set datafile separator ","
pick(name, quantity) = sprintf("< awk -F, '$1 == \"%s\" && $4 ~ /^%s/' '%s'", name, quantity, table)
set multiplot layout 2,2 title "Solver (points) and reference (lines)" font ",16"
set grid lc rgb "#dddddd"
set key bottom left Left reverse samplen 2

set title "Two 10 mm cubes on one axis"
set logscale xy
set xlabel "gap / edge"
set ylabel "force (N)"
plot pick("cubes on one axis", "force") using 3:6 with lines lw 2 lc rgb "#4477aa" title "Akoun and Yonnet", \
     "" using 3:5 with points pt 7 ps 0.7 lc rgb "#222222" title "solver"

unset logscale
set title "10 mm cube turned, middles 15 mm apart"
set xlabel "angle (degrees)"
set ylabel "torque (N m)"
set key top left Left reverse samplen 2
plot pick("cube turned about (1; 0.3; 0); middles 1.5 edges apart", "torque") \
     using 3:6 with lines lw 2 lc rgb "#4477aa" title "integral of the block field", \
     "" using 3:5 with points pt 7 ps 0.7 lc rgb "#222222" title "solver"

set title "Axial coupling of 8 and 8 blocks, gap 2 mm"
set ylabel "force (N)"
set y2label "torque (N m)"
set ytics nomirror
set y2tics
set yrange [0:500]
set y2range [0:10]
set xrange [0:22.5]
set key top right Left reverse samplen 2
coupling = "axial coupling of 8 and 8 blocks"
plot pick(coupling, "force") using 3:6 with lines lw 2 lc rgb "#4477aa" title "force, reference", \
     "" using 3:5 with points pt 7 ps 0.7 lc rgb "#222222" title "force, solver", \
     pick(coupling, "torque") using 3:6 axes x1y2 with lines lw 2 lc rgb "#cc6677" title "torque, reference", \
     "" using 3:5 axes x1y2 with points pt 5 ps 0.7 lc rgb "#882255" title "torque, solver"

set title "Deviation from the reference, all rows of the table"
unset y2tics
unset y2label
set ytics mirror
set autoscale
set logscale y
set format y "10^{%L}"
set yrange [1e-11:1e4]
set xlabel "row"
set ylabel "percent"
set key top left maxrows 3 Left reverse samplen 2
plot table every ::1 using 0:7 with points pt 7 ps 0.7 lc rgb "#222222" title "deviation", \
     table every ::1 using 0:8 with lines lc rgb "#ddaa33" title "solver's own estimate", \
     0.1 with lines dt 2 lw 2 lc rgb "#cc3311" title "promised: 0.1 %"
unset multiplot
