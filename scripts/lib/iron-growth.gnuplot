# Called by scripts/accuracy with `table` (the CSV file) and `image` (the SVG file to write).
set terminal svg size 700,420 font "Helvetica,13" background rgb "white"
set output image
set datafile separator ","
set title "2, 4, 8 and 12 cubes on steel blocks, and a coupling" font ",15"
set grid lc rgb "#dddddd"
set logscale xy
set format x "10^{%L}"
set xlabel "fluxes between patches"
set ylabel "seconds"
set yrange [0.05:20]
set key top left Left reverse samplen 2
plot table every ::1 using 2:3 with linespoints lw 2 pt 7 ps 0.7 lc rgb "#4477aa" title "first solve", \
     "" every ::1 using 2:4 with linespoints lw 2 pt 5 ps 0.7 lc rgb "#cc6677" title "further step", \
     1e-6 * x with lines dt 2 lc rgb "#888888" title "1 us per flux"
