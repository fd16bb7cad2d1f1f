# SPDX-License-Identifier: MIT
# Prints the medians of a run: with --arg output chart as the data of chart.gp, otherwise as the tables of
# docs/benchmarks.md. Fails when a target is missed by a factor of more than two, which noise does not explain.

# At most this ratio to the baseline, at least so many times as fast as the fastest peer.
def target($job; $library; $kib): { "get/INIParser": [2], "get/INIParser wide": [2], "load/INIDocument": [null, 3],
    "set/INIParser": [1.4], "set/INIParser wide": [1.4], "sort/INIParser/1024": [2],
    "read 100/INIDocument": [null, 1], "write 100/INIDocument": [null, 1], "stopwatch, start and read/qmUtility": [1.3],
    "frame, instant mode/qmUtility": [6], "frame, average mode/qmUtility": [6], "frame counter, construct/qmUtility": [3],
    "trace marker/qmUtility": [3], "line to the console/qmUtility": [2], "check of 10,000 files/qmUtility": [1.2] }
    | .["\($job)/\($library)/\($kib)"] // .["\($job)/\($library)"] // [];

def medians: [.benchmarks[] | select(.aggregate_name == "median") | (.run_name / "/") as [$job, $library, $kib]
    | {$job, $library, kib: ($kib // 0 | tonumber), ns: (.cpu_time * {ns: 1, us: 1e3, ms: 1e6}[.time_unit])}
    | .kind = if .library | test("INIParser|INIDocument|qmUtility") then "ours"
        elif .kib == 0 or .library == "lower bound" then "baseline" else "peer" end] | sort_by(.ns);
def fastest($kind): map(select(.kind == $kind))[0];
def ratio($a; $b): if $a and $b then $a.ns / $b.ns else null end;
def rows: medians | group_by(.job, .kib) | map(fastest("baseline") as $baseline | fastest("peer") as $peer
    | sort_by(.library)[] | select(.kind == "ours") | target(.job; .library; .kib) as [$most, $least]
    | . + {$baseline, $peer, $most, $least, ratio: ratio(.; $baseline), speed: ratio($peer; .)});
def growth: map(select(.job == "sort"))
    | {job: "growth of sort", kib: 16384, library: "INIParser", ratio: ratio(.[1]; .[0]), most: 25};

def digits: if . >= 100 then round elif . >= 10 then . * 10 | round / 10 else . * 100 | round / 100 end;
def time: .ns | if . < 1e3 then "\(digits) ns" elif . < 1e6 then "\(. / 1e3 | digits) us" else "\(. / 1e6 | digits) ms" end;
def other: if . then "\(.library), \(time)" else "" end;
def cell($ratio; $words; $target): $ratio
    | if . then "\(digits)" + if $target then " (\($words) \($target))" else "" end else "" end;
def table($head; cells): $head, ($head | gsub("[^|]+"; "---")), (.[] | "| " + ([cells] | join(" | ")) + " |");

if $output == "chart" then medians
    | (["get", 1024], ["set", 1024], ["load", 1024], ["sort", 1024], ["read 100", 4], ["write 100", 4]) as $panel
    | (map(select([.job, .kib] == $panel) | [.library, .ns, time, .kind]) | if . == [] then ["", 1, "", ""] else .[] end),
        [], [] | @tsv
else rows
    | (map(select(.kib > 0)) | table("| job | KiB | library | time | ratio to lower bound | fastest peer | times as fast |";
        .job, .kib, .library, time, cell(.ratio; "at most"; .most), (.peer | other), cell(.speed; "at least"; .least))),
      "\nSorting 16 times as much takes \(growth | cell(.ratio; "at most"; .most)) times as long.",
      "\n## Other services\n", (map(select(.kib == 0)) | table("| job | time | baseline | ratio to it |";
        .job, time, (.baseline | other), cell(.ratio; "at most"; .most))),
      ([(.[], growth) | select((.most and .ratio and .ratio > 2 * .most) or (.least and .speed and 2 * .speed < .least))
        | "bench: \(.job), \(.library), \(.kib) KiB: misses its target by far\n"] | add // empty | halt_error(1))
end
