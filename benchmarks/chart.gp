# SPDX-License-Identifier: MIT
# Draws what report.jq prints with --arg output chart: gnuplot -c benchmarks/chart.gp DATA PICTURE.svg
set terminal svg size 800,560 font "sans-serif,12" background "white"
set output ARG2
set datafile separator "\t"
array titles[6] = ["Load 1 MiB", "Look up 10,000 settings", "Look up 100 settings in 4 KiB", \
    "Change 100 settings in 4 KiB", "Look up one setting in 1 MiB", "Change one setting in 1 MiB"]
color(kind) = kind eq "ours" ? 0x1f6feb : kind eq "baseline" ? 0xd8b040 : 0xa8b0b8
set multiplot layout 3,2 title "INI files: median times, shorter is better" font ",15"
unset key; unset border; unset xtics; set ytics scale 0
set lmargin 18; set rmargin 9
do for [panel = 1:6] {
    set title titles[panel] font ",13" offset 0,-0.6
    plot [0:*] [-6.6:0.6] ARG1 index panel - 1 \
        using (0):(-$0):(0):2:(-$0 - 0.38):(-$0 + 0.38):(color(strcol(4))):ytic(1) \
        with boxxyerror fill solid linecolor rgb variable, \
        "" index panel - 1 using 2:(-$0):3 with labels left offset 0.6,0
}
