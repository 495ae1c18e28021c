# The pictures of docs/performance.md. Reads slots.dat and processes.dat of `data`, a directory, and
# writes to `docs`. Colours of middle brightness on no ground: they are read in light and in dark.
grey = '#808890'
set terminal svg size 760,400 font 'sans-serif,13' linewidth 1.5
set border 3 linecolor rgb grey
set tics nomirror textcolor rgb grey
set grid linecolor rgb grey linewidth 0.3 dashtype 3
set key left top Left reverse samplen 3 textcolor rgb grey
set xlabel textcolor rgb grey
set ylabel textcolor rgb grey
set y2label textcolor rgb grey
set logscale xy

blue = '#3b86e0'
orange = '#e0852b'
green = '#2fa36b'
red = '#d9534f'

# Columns of a lookup: its limit, plain loop, without locks, bare pairs, with locks.
atm = 2
card = 17
property = 27

set xlabel 'slots of the table'
set ylabel 'one lookup, us'
set xrange [80:40000]
set output docs.'/performance-slots.svg'
plot data.'/slots.dat' using 1:(column(property + 1)) with linespoints dashtype 2 pointtype 6 \
       linecolor rgb blue title 'property, plain loop', \
     '' using 1:(column(property + 2)) with linespoints pointtype 7 \
       linecolor rgb blue title 'property', \
     '' using 1:(column(card + 1)) with linespoints dashtype 2 pointtype 4 \
       linecolor rgb orange title 'card, plain loop', \
     '' using 1:(column(card + 2)) with linespoints pointtype 5 \
       linecolor rgb orange title 'card', \
     '' using 1:(column(card)) with lines dashtype 3 \
       linecolor rgb grey title 'limit: a load of each card range'

set output docs.'/performance-locks.svg'
plot data.'/slots.dat' using 1:(column(property + 4)) with linespoints pointtype 7 \
       linecolor rgb blue title 'property, with locks', \
     '' using 1:(column(atm + 4)) with linespoints pointtype 5 \
       linecolor rgb green title 'ATM, with locks', \
     '' using 1:(column(atm + 3)) with lines dashtype 3 \
       linecolor rgb grey title 'as many bare semaphore pairs', \
     '' using 1:(column(property + 2)) with linespoints dashtype 2 pointtype 6 \
       linecolor rgb blue title 'property, without locks', \
     '' using 1:(column(atm + 2)) with linespoints dashtype 2 pointtype 4 \
       linecolor rgb green title 'ATM, without locks'

set output docs.'/performance-processes.svg'
set xlabel 'processes'
set ylabel 'operations a second, all processes'
set y2label 'wait of one operation, us'
set logscale y2
set xrange [0.8:80]
set xtics (1, 2, 4, 8, 16, 32, 64)
set y2tics textcolor rgb grey
set border 11
plot data.'/processes.dat' using 1:2 with linespoints pointtype 7 \
       linecolor rgb blue title 'operations a second (left)', \
     '' using 1:3 axes x1y2 with linespoints pointtype 5 \
       linecolor rgb orange title 'median wait (right)', \
     '' using 1:4 axes x1y2 with linespoints pointtype 9 \
       linecolor rgb red title '99th percentile (right)'
