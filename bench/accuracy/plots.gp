# The plots of docs/accuracy.md out of the CSV files of velmora-accuracy:
# gnuplot -e "numbers='FOLDER'; images='FOLDER'" plots.gp
# Tables that were not made are left out.
set datafile separator ","
set datafile columnheaders
set datafile missing NaN
set terminal pngcairo size 800,480 font "sans,11" background "white"
set style fill solid 0.85 noborder
set grid ytics mytics lc rgb "#cccccc" lw 1, lc rgb "#eeeeee" lw 1
set border 3
set tics nomirror
set key outside right top Left reverse

there(name) = system(sprintf("test -s '%s/%s.csv' && echo 1 || echo 0", numbers, name)) + 0
file(name) = sprintf("%s/%s.csv", numbers, name)
png(name) = sprintf("%s/accuracy-%s.png", images, name)

models = "classic rational full"
array COLORS[3] = ["#1f77b4", "#2ca02c", "#d62728"]
array PALE[3] = ["#9ec9e8", "#a8dba8", "#f0a8a8"]
model(i) = word(models, i)
is(name, value) = (stringcolumn(name) eq value)
place(list, name) = sum [i = 1:words(list)] (is(name, word(list, i)) ? i : 0)
error = "error of projections over the whole image, px"

if (there("views")) {
  set output png("views")
  set title "How many views (strong distortion, 65 degrees, noise 0.1 px)"
  set xlabel "views"
  set ylabel error
  set logscale y
  set xrange [4:31]
  set yrange [0.05:4]
  plot for [i = 1:3] file("views") using (is("model", model(i)) && is("solver", "sparse") ? column("views") : NaN):"turned" \
         with linespoints lw 2 pt 7 lc rgb COLORS[i] title model(i), \
       for [i = 1:3] file("views") using (is("model", model(i)) && is("solver", "sparse") ? column("views") : NaN):"turned 90" \
         with lines lw 2 dt 3 lc rgb COLORS[i] title model(i)." 90 %", \
       for [i = 2:3] file("views") using (is("model", model(i)) && is("solver", "opencv") ? column("views") : NaN):"turned" \
         with linespoints lw 2 dt 2 pt 6 lc rgb COLORS[i] title model(i)." OpenCV"
}

if (there("noise")) {
  set output png("noise")
  set title "Noise of the points (12 views, strong distortion, 65 degrees)"
  set xlabel "noise, px"
  set ylabel "error of projections, px"
  set logscale xy
  set xrange [0.015:0.7]
  set xtics (0.02, 0.05, 0.1, 0.2, 0.5)
  set yrange [*:*]
  plot for [i = 1:3] file("noise") using (is("model", model(i)) ? column("noise") : NaN):"turned" \
         with linespoints lw 2 pt 7 lc rgb COLORS[i] title model(i).", image", \
       for [i = 1:3] file("noise") using (is("model", model(i)) ? column("noise") : NaN):"data" \
         with linespoints lw 2 dt 2 pt 6 lc rgb COLORS[i] title model(i).", where views are"
  unset logscale x
  set xtics auto
}

if (there("fields")) {
  set output png("fields")
  set terminal pngcairo size 960,420 font "sans,11" background "white"
  lenses = "light strong wide-angle"
  set multiplot layout 1,3 title "Field of view (12 views, noise 0.1 px)"
  set xlabel "field of view, degrees"
  set xrange [35:105]
  set yrange [0.05:10]
  set logscale y
  do for [l = 1:3] {
    set title word(lenses, l)." lens"
    if (l == 1) { set ylabel error } else { unset ylabel }
    set key inside top center vertical Left reverse samplen 2
    plot for [i = 1:3] file("fields") \
           using (is("model", model(i)) && is("lens", word(lenses, l)) ? column("field of view") : NaN):"turned" \
           with linespoints lw 2 pt 7 lc rgb COLORS[i] title model(i)
  }
  unset multiplot
  set key outside right top Left reverse vertical
  set terminal pngcairo size 800,480 font "sans,11" background "white"
}

unset xlabel
set xtics scale 0
set boxwidth 0.13

if (there("models")) {
  set output png("models")
  lenses = "light strong wide-angle tilted"
  set title "Which model for which lens (85 degrees, 12 views, noise 0.1 px)"
  set ylabel error
  unset logscale y
  set xrange [0.5:4.5]
  set yrange [0:*]
  set xtics ("light" 1, "strong" 2, "wide-angle" 3, "tilted sensor" 4)
  plot for [i = 1:3] file("models") \
         using (is("model", model(i)) && is("solver", "sparse") ? place(lenses, "lens") + (i - 2) * 0.28 - 0.065 : NaN):"turned" \
         with boxes lc rgb COLORS[i] title model(i), \
       for [i = 1:3] file("models") \
         using (is("model", model(i)) && is("solver", "opencv") ? place(lenses, "lens") + (i - 2) * 0.28 + 0.065 : NaN):"turned" \
         with boxes lc rgb PALE[i] title model(i)." OpenCV"
}

if (there("deviations")) {
  set output png("deviations")
  set terminal pngcairo size 900,480 font "sans,11" background "white"
  set title "Share of the errors within one (dark) and two (pale) reported standard deviations"
  set ylabel "share"
  unset logscale y
  set yrange [0:1.05]
  set xrange [0.4:8.6]
  set bmargin 3.5
  set xtics ("classic\n5 views" 1, "classic\n12 views" 2, "classic\n30 views" 3, "classic\nOpenCV" 4, \
             "rational" 5, "rational\nOpenCV" 6, "full" 7, "full\nOpenCV" 8)
  array NAMES[3] = ["focal lengths", "principal point", "distortion"]
  set boxwidth 0.24
  study(r) = int(r / 3) + 1
  offset(r) = (int(r) % 3 - 1) * 0.27
  plot for [i = 1:3] file("deviations") using (int($0) % 3 == i - 1 ? study($0) + offset($0) : NaN):"in 2 s.d." \
         with boxes lc rgb PALE[i] notitle, \
       for [i = 1:3] file("deviations") using (int($0) % 3 == i - 1 ? study($0) + offset($0) : NaN):"in 1 s.d." \
         with boxes lc rgb COLORS[i] title NAMES[i], \
       0.683 with lines lw 1.5 dt 2 lc rgb "black" title "68 %", \
       0.954 with lines lw 1.5 dt 3 lc rgb "black" title "95 %"
  unset bmargin
  set terminal pngcairo size 800,480 font "sans,11" background "white"
}

if (there("pictures")) {
  set output png("pictures")
  ways = "opencv sparse discs"
  set title "Rendered pictures (classic model, strong distortion, 12 pictures)"
  set ylabel error
  set logscale y
  set yrange [0.005:1]
  set xrange [0.4:6.6]
  set xtics ("50 deg\nclear" 1, "50 deg\npoor" 2, "65 deg\nclear" 3, "65 deg\npoor" 4, "85 deg\nclear" 5, "85 deg\npoor" 6)
  set bmargin 3.5
  set boxwidth 0.19
  at(shift) = shift + place("50 65 85", "field of view") * 2 - (is("pictures", "clear") ? 1 : 0)
  plot file("pictures") using (is("model", "classic") && is("finder", "standard") && is("solver", "sparse") ? at(-0.3) : NaN):"turned" \
         with boxes lc rgb PALE[1] title "standard finder", \
       file("pictures") using (is("model", "classic") && is("finder", "robust") && is("solver", "sparse") ? at(-0.1) : NaN):"turned" \
         with boxes lc rgb COLORS[1] title "robust finder", \
       file("pictures") using (is("model", "classic") && is("finder", "standard") && is("solver", "sparse + discs") ? at(0.1) : NaN):"turned" \
         with boxes lc rgb PALE[2] title "standard, discs corrected", \
       file("pictures") using (is("model", "classic") && is("finder", "robust") && is("solver", "sparse + discs") ? at(0.3) : NaN):"turned" \
         with boxes lc rgb COLORS[2] title "robust, discs corrected"
  unset bmargin
}

set xtics auto scale 1
if (there("pairs")) {
  set output png("pairs")
  set title "Pairs of cameras (classic model, strong distortion, 65 degrees, noise 0.1 px)"
  set xlabel "views"
  set ylabel "error of the translation, mm"
  unset logscale
  set xrange [4:21]
  set xtics (5, 10, 20)
  set yrange [0:*]
  baselines = "60 120 240"
  plot for [i = 1:3] file("pairs") \
         using (int($0) < 9 && is("baseline mm", word(baselines, i)) ? column("views") : NaN):"T mm" \
         with linespoints lw 2 pt 7 lc rgb COLORS[i] title word(baselines, i)." mm apart", \
       for [i = 1:3] file("pairs") \
         using (int($0) < 9 && is("baseline mm", word(baselines, i)) ? column("views") : NaN):"T 90" \
         with lines lw 2 dt 3 lc rgb COLORS[i] title word(baselines, i)." mm, 90 %"
}

if (there("sheets")) {
  set output png("sheets")
  set terminal pngcairo size 800,560 font "sans,11" background "white"
  set title "Sheets that are not flat (classic model, light distortion, 60 degrees, noise 0.1 px)"
  unset xlabel
  set ylabel "error of projections where views are, px"
  set logscale y
  set xrange [-0.6:13.6]
  set yrange [0.03:4]
  set xtics auto rotate by -35 scale 0
  set boxwidth 0.27
  set bmargin 11
  label(i) = stringcolumn("sheet").", ".stringcolumn("views")
  plot file("sheets") using (column(0) - 0.28):"flat":xtic(label(0)) with boxes lc rgb COLORS[3] title "taken for flat", \
       file("sheets") using (column(0)):"with shape" with boxes lc rgb COLORS[2] title "with its shape", \
       file("sheets") using (column(0) + 0.28):"flat board" with boxes lc rgb PALE[1] title "ideal flat board"
  unset bmargin
  unset logscale
}
