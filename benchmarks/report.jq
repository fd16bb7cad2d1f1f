# SPDX-License-Identifier: MIT
# Prints the medians of a run: with --arg output chart as the data of chart.gp, otherwise as the tables of
# docs/benchmarks.md. Fails when a target is missed by a factor of more than two, which noise does not explain.

# At most this ratio to the baseline, at least so many times as fast as the fastest peer.
def target($job; $library; $kib): { "get/INIParser/64": [0.7], "get/INIParser/1024": [0.7],
    "get/INIParser wide/64": [0.7], "get/INIParser wide/1024": [0.7], "set/INIParser": [1.4], "set/INIParser wide": [1.4],
    "sort/INIParser/1024": [2], "load/INIDocument": [null, 5], "load CR LF/INIDocument": [null, 5],
    "read 100/INIDocument": [null, 1], "read all/INIDocument": [null, 0.33], "write 100/INIDocument": [null, 1],
    "write 100 on disk/INIDocument": [1.2], "stopwatch, start and read/qmUtility": [1.3],
    "frame, instant mode/qmUtility": [4], "frame, average mode/qmUtility": [4], "frame counter, construct/qmUtility": [2],
    "trace marker/qmUtility": [5], "line to the console/qmUtility": [2.5], "stopwatch, log line/qmUtility": [3],
    "check of 10,000 files/qmUtility": [1.2] }
    | .["\($job)/\($library)/\($kib)"] // .["\($job)/\($library)"] // [];
# At most this ratio of the times of two cases.
def pairs: [(64, 1024, 16384 | ["load CR LF/INIDocument/\(.)", "load/INIDocument/\(.)", 1.3]),
    ["add 20,000/INIDocument/547", "add 5,000/INIDocument/137", 5], ["sort/INIParser/16384", "sort/INIParser/1024", 25]];

def medians: [.benchmarks[] | select(.aggregate_name == "median") | (.run_name / "/") as [$job, $library, $kib]
    | (if .run_name | endswith("real_time") then .real_time else .cpu_time end) as $time
    | {$job, $library, kib: ($kib // 0 | tonumber), ns: ($time * {ns: 1, us: 1e3, ms: 1e6}[.time_unit])}
    | .name = "\(.job)/\(.library)/\(.kib)"
    | .kind = if .library | test("INIParser|INIDocument|qmUtility") then "ours"
        elif .kib == 0 or .library == "baseline" then "baseline" else "peer" end] | sort_by(.ns);
def fastest($kind): map(select(.kind == $kind))[0];
def ratio($a; $b): if $a and $b then $a.ns / $b.ns else null end;
def rows: medians | group_by(.job, .kib) | map(fastest("baseline") as $baseline | fastest("peer") as $peer
    | sort_by(.library)[] | select(.kind == "ours") | target(.job; .library; .kib) as [$most, $least]
    | . + {$baseline, $peer, $most, $least, ratio: ratio(.; $baseline), speed: ratio($peer; .)});
def compared: INDEX(.name) as $at
    | pairs | map(. as [$a, $b, $most] | {name: "\($a) : \($b)", ratio: ratio($at[$a]; $at[$b]), $most});

def digits: if . >= 100 then round elif . >= 10 then . * 10 | round / 10 else . * 100 | round / 100 end;
def time: .ns | if . < 1e3 then "\(digits) ns" elif . < 1e6 then "\(. / 1e3 | digits) us" else "\(. / 1e6 | digits) ms" end;
def other: if . then "\(.library), \(time)" else "" end;
def cell($ratio; $words; $target): $ratio
    | if . then "\(digits)" + if $target then " (\($words) \($target))" else "" end else "" end;
def table($head; cells): $head, ($head | gsub("[^|]+"; "---")), (.[] | "| " + ([cells] | join(" | ")) + " |");

if $output == "chart" then medians
    | (["load", 1024], ["read all", 389], ["read 100", 4], ["write 100", 4], ["get", 1024], ["set", 1024]) as $panel
    | (map(select([.job, .kib] == $panel) | [.library, .ns, time, .kind]) | if . == [] then ["", 1, "", ""] else .[] end),
        [], [] | @tsv
else rows
    | (map(select(.kib > 0)) | table("| job | KiB | library | time | ratio to baseline | fastest peer | times as fast |";
        .job, .kib, .library, time, cell(.ratio; "at most"; .most), (.peer | other), cell(.speed; "at least"; .least))),
      "", (compared | table("| time of this : time of that | ratio |"; .name, cell(.ratio; "at most"; .most))),
      "\n## Other services\n", (map(select(.kib == 0)) | table("| job | time | baseline | ratio to it |";
        .job, time, (.baseline | other), cell(.ratio; "at most"; .most))),
      ([(.[], compared[]) | select((.most and .ratio and .ratio > 2 * .most) or (.least and .speed and 2 * .speed < .least))
        | "bench: \(.name): misses its target by far\n"] | add // empty | halt_error(1))
end
