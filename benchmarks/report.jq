# SPDX-License-Identifier: MIT
# Prints the medians of a run: with --arg output chart as the data of chart.gp, otherwise as the tables of
# docs/benchmarks.md. Fails if a target is missed by a factor of more than two, which noise does not explain.

# The most that a case may take: a ratio to another case, or to the fastest "peer" or "baseline" of its job.
def targets: [
    ("INIParser/64", "INIParser wide/64", "INIParser/1024", "INIParser wide/1024"
        | ["get/\(.)", "baseline", 0.7], ["set/\(.)", "baseline", 1.4]),
    ["sort/INIParser/1024", "baseline", 2],
    ["sort/INIParser/16384", "sort/INIParser/1024", 25],
    (64, 1024, 16384 | ["load/INIDocument/\(.)", "peer", 0.2],
                       ["load CR LF/INIDocument/\(.)", "peer", 0.2],
                       ["load CR LF/INIDocument/\(.)", "load/INIDocument/\(.)", 1.3]),
    ["read 100/INIDocument/4", "peer", 1],
    ["read all/INIDocument/389", "peer", 3],
    ["write 100/INIDocument/4", "peer", 1],
    ["write 100 on disk/INIDocument/4", "baseline", 1.2],
    ["add/INIDocument/547", "add/INIDocument/137", 5],
    ["check of 10,000 files/qmUtility", "baseline", 1.2],
    ["frame counter, construct/qmUtility", "baseline", 2],
    ["frame, average mode/qmUtility", "baseline", 4],
    ["frame, instant mode/qmUtility", "baseline", 4],
    ["line to the console/qmUtility", "baseline", 2.5],
    ["stopwatch, log line/qmUtility", "baseline", 3],
    ["stopwatch, start and read/qmUtility", "baseline", 1.3],
    ["trace marker/qmUtility", "baseline", 5]
];

# The medians of a run, in nanoseconds. Names are job/library/KiB, or job/library outside INI files.
def cases: [
    .benchmarks[] | select(.aggregate_name == "median")
    | (.run_name | split("/")) as [$job, $library, $kib]
    | {
        name: [$job, $library, $kib] | map(values) | join("/"),
        job: [$kib == null, $job, ($kib // 0 | tonumber)],
        $library,
        kind: (if $library | test("INIParser|INIDocument|qmUtility") then "ours"
            elif $library == "baseline" or $kib == null then "baseline" else "peer" end),
        ns: (if .run_name | endswith("/real_time") then .real_time else .cpu_time end)
    }
] | sort_by(.ns);

def ratios: . as $cases | INDEX(.name) as $named | targets | map(
    . as [$name, $other, $most] | $named[$name] as $case
    | ($named[$other] // first($cases[] | select(.job == $case.job and .kind == $other))) as $base
    | select($case and $base) | { $name, base: $base.name, ratio: ($case.ns / $base.ns), $most });

def digits: if . >= 100 then round elif . >= 10 then . * 10 | round / 10 else . * 100 | round / 100 end;
def time:
    if . < 1e3 then "\(digits) ns"
    elif . < 1e6 then "\(. / 1e3 | digits) us"
    else "\(. / 1e6 | digits) ms" end;
def table(heads; cells): [heads], [heads | "---"], (.[] | [cells]) | "| " + join(" | ") + " |";

cases | if $output == "chart" then
    (["load", 1024], ["read all", 389], ["read 100", 4],
     ["write 100", 4], ["get", 1024], ["set", 1024]) as $job
    | ((.[] | select(.job[1:] == $job) | [.library, .ns, (.ns | time), .kind]) // ["", 1, "", ""]), [], []
    | @tsv
else
    (group_by(.job) | table("job", "KiB", "qmUtility", "other libraries", "baseline";
        .[0].job[1], (.[0].job[2] | if . > 0 then . else "" end),
        (("ours", "peer", "baseline") as $kind | map(select(.kind == $kind) | "\(.library) \(.ns | time)")
            | join(", ") | ltrimstr("qmUtility ") | ltrimstr("baseline ")))),
    "",
    (ratios | table("case", "beside", "ratio", "at most"; .name, .base, (.ratio | digits), .most)),
    (ratios | map(select(.ratio > 2 * .most) | "bench: \(.name): misses its target by far\n")
        | add // empty | halt_error(1))
end
