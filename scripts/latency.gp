# Latency distribution of one request size from socket_bench's --plot-data
# files: dir, size (small|large) and out (a PNG) come from the command line.
# One panel per window; y runs in "nines" so that the tail (p99, p99.9) is
# as visible as the median.
set terminal pngcairo size 1200,560 font ",10"
set output out
set datafile separator "\t"
set key below
set logscale x
set format x "%.0f"
set logscale y
set xlabel "latency (µs)"
set ylabel "fraction of requests answered"
set ytics ("50%%" 2, "90%%" 10, "99%%" 100, "99.9%%" 1000, "99.99%%" 10000)
set yrange [1.5:15000]
set grid
set multiplot layout 1,2 title sprintf("Round trip, %s request", size)
do for [w in "16 64"] {
  file = sprintf("%s/%s-w%s.dat", dir, size, w)
  set title sprintf("window %s", w)
  plot for [i=2:*] file using i:(1/(1-$1)) with lines lw 2 title columnhead(i)
}
unset multiplot
