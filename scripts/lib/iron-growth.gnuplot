# Called by scripts/accuracy with `table` (the CSV file) and `image` (the SVG file to write).
set terminal svg size 700,420 font "Helvetica,13" background rgb "white"
set output image
set datafile separator ","
set title "2, 4, 8 and 12 cubes on steel blocks, and a coupling of 8 and 8 blocks" font ",15"
set grid lc rgb "#dddddd"
set logscale xy
set format x "10^{%L}"
set xlabel "fluxes between patches"
set ylabel "seconds"
set yrange [0.005:20]
set key bottom right Left reverse samplen 2
plot table every ::1::4 using 2:3 with linespoints lw 2 pt 7 ps 0.7 lc rgb "#4477aa" title "cubes, first solve", \
     "" every ::1::4 using 2:4 with linespoints lw 2 pt 5 ps 0.7 lc rgb "#cc6677" title "cubes, further step", \
     "" every ::5 using 2:3 with points pt 6 ps 1.2 lw 2 lc rgb "#222255" title "coupling, first solve", \
     "" every ::5 using 2:4 with points pt 4 ps 1.2 lw 2 lc rgb "#882255" title "coupling, further step", \
     1e-6 * x with lines dt 2 lc rgb "#888888" title "1 us per flux"
