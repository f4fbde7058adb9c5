# How far the driven disc is behind the driver when a tool drives them through an FMU (examples/fmu/drive.py), with and without
# the speeds as inputs. Called with runs, image.
set datafile separator ","
set output image
set key right top opaque
set yrange [0:12.5]
set xrange [0:240]
set grid lc rgb "#dddddd"
set border 3 lc rgb "#555555"
set tics nomirror
set xlabel "time (ms)"
set ylabel "driver ahead of driven disc (degrees)"
behind(file) = sprintf("%s/%s.csv", runs, file)
angle(a, b) = (a - b) * 180 / pi
plot behind("fmu-lag") using (1000 * column("time")):(angle(column("driver.angle"), column("driven.angle"))) \
         with lines lw 2 lc rgb "#cc3311" title "steps of 1 ms, angles alone: the torque lags, and the discs swing up", \
     behind("fmu-fine") using (1000 * column("time")):(angle(column("driver.angle"), column("driven.angle"))) \
         with lines lw 5 lc rgb "#bbccdd" title "steps of 0.1 ms, with speeds", \
     behind("fmu-speeds") using (1000 * column("time")):(angle(column("driver.angle"), column("driven.angle"))) \
         with lines lw 2 lc rgb "#0077bb" title "steps of 1 ms, with speeds"
