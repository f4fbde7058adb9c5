# Called by scripts/plot-examples with `runs` (folder of the runs), `images` (folder to draw into) and `type` (svg, png).
set datafile separator ","
set grid lc rgb "#dddddd"
set key outside bottom center horizontal Left reverse samplen 2
blue = "#4477aa"; red = "#cc3311"; dark = "#222222"
picture(name) = images . "/example-" . name . "." . type
states(name, file) = runs . "/" . name . "/" . file
expected(name, file) = "examples/" . name . "/" . file . ".expected.csv"

set output picture("cube-magnets")
set title "Two coaxial cube magnets: attraction over gap"
set xlabel "gap (mm)"; set ylabel "force on the upper magnet (N)"
plot expected("cube-magnets", "scenario") using (2 + 20 * $1):2 with lines lw 2 lc rgb blue title "closed form", \
     states("cube-magnets", "states.csv") using (1000 * (column("upper.Z [m]") - column("lower.Z [m]")) - 10):"upper.Force_z [N]" \
     with points pt 7 ps 0.7 lc rgb dark title "run"

set output picture("magnetic-spring")
set title "Magnetic spring: a cube magnet between two that repel it"
set xlabel "time (ms)"; set ylabel "position (mm)"
plot expected("magnetic-spring", "scenario") using (1000 * $1):(1000 * $2) with lines lw 2 lc rgb blue title "integrated closed form", \
     states("magnetic-spring", "states.csv") using (1000 * column("Time [s]")):(1000 * column("carriage.Coordinate [m]")) \
     with points pt 7 ps 0.6 lc rgb dark title "run"

set output picture("pendulum")
set title "Pendulum: a hinged magnet over a fixed one"
set xlabel "time (s)"; set ylabel "angle (degrees)"
plot expected("pendulum", "scenario") using 1:($2 * 180 / pi) with lines lw 2 lc rgb blue title "independent integration", \
     states("pendulum", "states.csv") every 2 using "Time [s]":(column("hinge.Coordinate [rad]") * 180 / pi) \
     with points pt 7 ps 0.6 lc rgb dark title "run, every second step"

set output picture("axial-coupling-torque")
set title "Axial coupling: torque over the angle between the discs"
set xlabel "angle (degrees)"; set ylabel "torque on the driven disc (N m)"
set xtics 15
plot expected("axial-coupling", "torque") using (90 * $1 / 0.24):($2 / 1000) with lines smooth csplines lw 2 lc rgb blue title "Coulomb's law between the faces", \
     states("axial-coupling", "torque.states.csv") using (90 * column("Time [s]") / 0.24):(column("driven.Torque_x [mN m]") / 1000) \
     with points pt 7 ps 0.7 lc rgb dark title "run"

set output picture("axial-coupling-yoked")
set title "Axial coupling with and without yokes: torque over the angle between the discs"
plot expected("axial-coupling", "yoked") using (90 * $1 / 0.24):($2 / 1000) with lines smooth csplines lw 2 lc rgb red title "with yokes of ideal iron, Fourier series", \
     expected("axial-coupling", "torque") using (90 * $1 / 0.24):($2 / 1000) with lines smooth csplines lw 2 lc rgb blue title "without, Coulomb's law between the faces", \
     states("axial-coupling", "yoked.states.csv") using (90 * column("Time [s]") / 0.24):(column("driven.Torque_x [mN m]") / 1000) \
     with points pt 7 ps 0.7 lc rgb dark title "run with yokes of steel"
set xtics autofreq

set output picture("axial-coupling-motion")
set title "Axial coupling: the driven disc follows, and slips when overloaded"
set xlabel "time (s)"; set ylabel "angle (rad)"
plot states("axial-coupling", "following.states.csv") using "Time [s]":"driver_hinge.Coordinate [rad]" with lines lw 2 dt 2 lc rgb "#888888" title "driver", \
     expected("axial-coupling", "following") using 1:2 with lines lw 2 lc rgb blue title "small damper, independent integration", \
     states("axial-coupling", "following.states.csv") using "Time [s]":"driven_hinge.Coordinate [rad]" with points pt 7 ps 0.6 lc rgb dark title "run", \
     expected("axial-coupling", "slipping") using 1:2 with lines lw 2 lc rgb red title "large damper, independent integration", \
     states("axial-coupling", "slipping.states.csv") using "Time [s]":"driven_hinge.Coordinate [rad]" with points pt 5 ps 0.6 lc rgb dark title "run"

set output picture("tilted-magnets")
set title "Tilted magnets: torque on the right one in its own axes, both turning about skew axes"
set xlabel "time (s)"; set ylabel "torque (mN m)"
tilted(axis) = sprintf("right.Torque_%s [mN m]", axis)
plot for [i=1:3] expected("tilted-magnets", "scenario") using "Time [s]":(column(tilted(word("x y z", i)))) \
         with lines smooth csplines lw 2 lc rgb word(blue . " " . red . " " . "#228833", i) title word("x y z", i) . ", Coulomb's law between the faces", \
     for [i=1:3] states("tilted-magnets", "states.csv") using "Time [s]":(column(tilted(word("x y z", i)))) \
         with points pt 7 ps 0.6 lc rgb dark title i == 1 ? "run" : ""

set output picture("levitating-top-hovering")
set title "Levitating top: hovering at 22 revolutions per second"
set xlabel "time (s)"; set ylabel "way from the drawn place (mm)"
way(axis) = sprintf("flight.Displacement %s [m]", axis)
plot for [i=1:3] expected("levitating-top", "hovering") using "Time [s]":(1000 * column(way(word("x y z", i)))) \
         with lines lw 2 lc rgb word(blue . " " . red . " #228833", i) title word("x y z", i) . ", independent integration", \
     for [i=1:3] states("levitating-top", "hovering.states.csv") every 10 using "Time [s]":(1000 * column(way(word("x y z", i)))) \
         with points pt 7 ps 0.4 lc rgb dark title i == 1 ? "run, every tenth step" : ""

set output picture("levitating-top-falling")
set title "Levitating top: falling at 12 revolutions per second"
set xlabel "time (s)"; set ylabel "height of the middle (mm)"; set y2label "way sideways (mm)"; set y2tics; set ytics nomirror
height = "flight.Displacement z [m]"
plot expected("levitating-top", "falling") using "Time [s]":(39 + 1000 * column(height)) with lines lw 2 lc rgb "#228833" title "height", \
     for [i=1:2] expected("levitating-top", "falling") using "Time [s]":(1000 * column(way(word("x y", i)))) axes x1y2 \
         with lines lw 2 lc rgb word(blue . " " . red, i) title word("x y", i) . " (right axis)", \
     states("levitating-top", "falling.states.csv") every 5 using "Time [s]":(39 + 1000 * column(height)) \
         with points pt 7 ps 0.4 lc rgb dark title "run, every fifth step", \
     for [i=1:2] states("levitating-top", "falling.states.csv") every 5 using "Time [s]":(1000 * column(way(word("x y", i)))) axes x1y2 \
         with points pt 7 ps 0.4 lc rgb dark title ""
unset y2label; unset y2tics; set ytics mirror

set output picture("radial-bearing")
set title "Radial bearing: the rotor's middle settles"
set xlabel "time (s)"; set ylabel "way from the middle (mm)"
shaft(axis) = sprintf("shaft.Displacement %s [m]", axis)
plot for [i=1:3] expected("radial-bearing", "settling") using "Time [s]":(1000 * column(shaft(word("x y z", i)))) \
         with lines lw 2 lc rgb word(blue . " " . red . " #228833", i) \
         title word("axial sideways vertical", i) . ", independent integration", \
     for [i=1:3] states("radial-bearing", "settling.states.csv") every 3 using "Time [s]":(1000 * column(shaft(word("x y z", i)))) \
         with points pt 7 ps 0.4 lc rgb dark title i == 1 ? "run, every third step" : ""
