# Draws the benchmarks: a bar for each library at each job on a file of 1 MiB, and below them what the other services take
# beside what they are allowed.
#
#   awk -f benchmarks/Chart.awk INI_RESULTS.csv TABLES > benchmarks.svg
#
# The first file is what the INI benchmarks write with --benchmark_out_format=csv, in microseconds; the second holds the
# tables that the programs print.

function text(x, y, class, anchor, words) {
    printf "  <text x=\"%d\" y=\"%d\" class=\"%s\" text-anchor=\"%s\">%s</text>\n", x, y, class, anchor, words
}

function bar(y, class, width) {
    printf "  <rect x=\"%d\" y=\"%d\" width=\"%.1f\" height=\"14\" rx=\"2\" class=\"%s\"/>\n", left, y, width, class
}

function duration(us) { return us < 1000 ? sprintf("%.3g us", us) : sprintf("%.3g ms", us / 1000) }

function draw_job(job, title, limit_name, limit,    i, n, who, names, time, longest, class) {
    n = 0
    for (i = 1; i <= results; i++)
        if (result[i, "job"] == job && result[i, "who"] != "ours")
            names[++n] = i
    if (n == 0)
        return
    for (i = 2; i <= n; i++) { # by duration
        who = names[i]
        for (at = i - 1; at > 0 && result[names[at], "time"] > result[who, "time"]; at--)
            names[at + 1] = names[at]
        names[at + 1] = who
    }
    longest = result[names[n], "time"]
    if (ours[job] > longest)
        longest = ours[job]
    text(24, y + 14, "title", "start", title)
    y += 24
    draw_library("ours", "qmUtility", ours[job], longest, job)
    draw_library("limit", limit_name, limit, longest, job)
    for (i = 1; i <= n; i++)
        draw_library("peer", result[names[i], "who"], result[names[i], "time"], longest, job)
    y += 12
}

function draw_library(class, name, time, longest, job) {
    text(left - 10, y + 12, class == "ours" ? "strong" : "plain", "end", name)
    bar(y, class, time / longest * full)
    text(left + time / longest * full + 8, y + 12, class == "ours" ? "strong" : "plain", "start",
        duration(time) (class == "ours" ? "" : sprintf(", %.3g x", time / ours[job])))
    y += 20
}

BEGIN { left = 200; full = 400; y = 60 }

FNR == NR {
    if ($0 ~ /^"[^"]*1 MiB[^"]*_median"/) {
        split($0, quoted, "\"")
        split(substr($0, length(quoted[2]) + 4), figure, ",")
        sub(/_median$/, "", quoted[2])
        parts = split(quoted[2], part, "/")
        if (part[1] == "limit")
            reading = figure[2]
        else if (part[1] == "write limit")
            writing = figure[2]
        else {
            results++
            result[results, "job"] = part[1]
            result[results, "who"] = part[parts]
            result[results, "time"] = figure[2]
            if (part[parts] == "ours")
                ours[part[1]] = figure[2]
        }
    }
    next
}

/^\| .* : .* \| [0-9.]+ : [0-9.]+ \| / {
    split($0, cell, / *\| */)
    rows++
    row[rows, "what"] = cell[2]
    row[rows, "ratio"] = cell[4]
    row[rows, "most"] = cell[5]
}

END {
    height = 60 + 3 * 36 + 20 * (results + 2) + (rows ? 44 + 20 * rows : 0)
    printf "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 760 %d\" width=\"760\" height=\"%d\" " \
        "font-family=\"system-ui, sans-serif\" font-size=\"13\">\n", height, height
    print "  <style>"
    print "    .card { fill: #ffffff; stroke: #d0d7de } text { fill: #1f2328 } .plain, .soft { fill: #59636e }"
    print "    .soft { font-size: 12px } .title, .strong { font-weight: bold } .head { font-weight: bold; font-size: 15px }"
    print "    .ours { fill: #1f6feb } .peer { fill: #b6bec8 } .limit { fill: #e3e7eb; stroke: #b6bec8 }"
    print "    .over { fill: #d1570b } .most { stroke: #1f2328; stroke-width: 1.5 }"
    print "    @media (prefers-color-scheme: dark) {"
    print "      .card { fill: #0d1117; stroke: #3d444d } text { fill: #f0f6fc } .plain, .soft { fill: #9198a1 }"
    print "      .ours { fill: #58a6ff } .peer { fill: #4d5661 } .limit { fill: #1c2129; stroke: #4d5661 }"
    print "      .over { fill: #f0883e } .most { stroke: #f0f6fc }"
    print "    }"
    print "  </style>"
    printf "  <rect class=\"card\" x=\"0.5\" y=\"0.5\" width=\"759\" height=\"%d\" rx=\"8\"/>\n", height - 1
    text(24, 34, "head", "start", "INI operations on a file of 1 MiB")
    text(736, 34, "soft", "end", "shorter is better; x: how many times qmUtility's duration")
    draw_job("get", "Look up the last key", "reading the file once", reading)
    draw_job("load", "Take all keys into a list", "reading the file once", reading)
    draw_job("set", "Change a value and write the file back, with a flush after each record", "a write for each record", writing)
    if (rows) {
        text(24, y + 14, "head", "start", "Time, frame rates, file changes")
        text(736, y + 14, "soft", "end", "the mark: at most so many times what the work itself takes")
        y += 32
        for (i = 1; i <= rows; i++) {
            left = 450
            share = row[i, "ratio"] / row[i, "most"]
            text(left - 10, y + 12, "plain", "end", row[i, "what"])
            bar(y, share > 1 ? "over" : "ours", (share > 1.3 ? 1.3 : share) * 150)
            printf "  <path class=\"most\" d=\"M%d,%d v18\"/>\n", left + 150, y - 2
            text(736, y + 12, "plain", "end", sprintf(row[i, "ratio"] < 100 ? "%.3g of %g" : "%.0f of %g", row[i, "ratio"], row[i, "most"]))
            y += 20
        }
    }
    print "</svg>"
}
