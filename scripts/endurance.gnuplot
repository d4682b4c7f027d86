# Draws docs/endurance.svg of the notes that endurance.sh has left in out/ for both targets.
set datafile separator ','
set terminal svg size 900, 760 font 'DejaVu Sans, 13' background 'white'
set output 'docs/endurance.svg'
set multiplot layout 3, 1 title 'Days of PAL video through the whole engine' offset 0, 0
set grid
set key below horizontal
set xlabel 'hours of video'
set yrange [0:*]
targets = "win32 win64"
notes(target) = sprintf('out/endurance-%s.csv', target)
set ylabel 'MiB'
plot for [t in targets] notes(t) using 1:($13 / 1024) every ::1 with lines lw 2 title 'memory, '.t
set ylabel 'count'
plot for [t in targets] notes(t) using 1:($10 - $11) every ::1 with lines lw 2 title "handles less the system's own, ".t, \
     for [t in targets] notes(t) using 1:12 every ::1 with lines lw 2 title 'threads, '.t
set ylabel 'frames'
plot for [t in targets] notes(t) using 1:9 every ::1 with lines lw 2 title 'largest backlog of the writer, '.t, \
     for [t in targets] notes(t) using 1:($3 + $4) every ::1 with lines lw 2 title 'missing or wrong, '.t
unset multiplot
