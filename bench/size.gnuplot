set datafile separator ','
set multiplot layout 1,2
set logscale xy
set grid
set key left top Left reverse
set xlabel 'size of the file, MB'
set ylabel 'seconds'
plot data using 1:2 with linespoints pt 7 title 'plenvorith', \
     data using 1:4 with linespoints pt 6 dt 2 title 'number floor: only reading the numbers'
set ylabel 'peak memory, MB'
plot data using 1:3 with linespoints pt 7 title 'plenvorith', \
     data using 1:1 with lines dt 2 title 'size of the file'
unset multiplot
