#!/usr/bin/env bash
# How `kestrelvane-cli convert` scales with the job count: folders of 1,000 and 10,000 tiny WAVs
# (0.05 s mono, about 4 KB) to MP3 with one slot per processor (up to 8), the real codec entry.
# Per count:
#   - wall time and time per job of the CLI (GNU time);
#   - the CLI's own CPU time, its codecs left out (perf stat --no-inherit, task-clock);
#   - the same files run by `xargs -P SLOTS` on the same codec entry with the options the CLI puts
#     on its command lines (`kestrelvane-cli options`); two rounds, the second in reverse order;
#     the ratio of elapsed times, and of the CPU time of all processes of each run (GNU time);
#   - in one more run under strace -c (the CLI process alone, no -f; tracing slows it, so it is
#     not timed): its stat calls (stat, lstat, fstat, newfstatat, statx) and all its system calls,
#     and the peak resident memory of the run's largest process, the CLI (GNU time).
# Goals: time per job at the largest count within 10 % of that at the smallest; every CLI run
# within 1.10x of xargs.
#
#   bench/convert_scale_bench.sh [--no-trace] [BUILD_DIR] [COUNT...]
# BUILD_DIR defaults to build/ (or $KV_BUILD_DIR), COUNTs to 1000 10000. --no-trace skips the
# strace run, which stops the CLI at each of its system calls and so takes long where they are many.
# Needs sox, lame, GNU time, strace and perf; as root (or with sudo) the missing Debian packages
# are installed.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
trace=yes
if [ "${1:-}" = --no-trace ]; then
    trace=no
    shift
fi
build=${1:-${KV_BUILD_DIR:-$root/build}}
shift $(($# > 0 ? 1 : 0))
counts=("$@")
[ ${#counts[@]} -gt 0 ] || counts=(1000 10000)
cli=$build/bin/kestrelvane-cli
codec=$build/bin/codec/lame
[ -x "$cli" ] && [ -x "$codec" ] || { echo "build kestrelvane-cli into $build first" >&2; exit 2; }

# Debian package of each tool.
declare -A packages=([sox]=sox [/usr/bin/lame]=lame [/usr/bin/time]=time [strace]=strace [perf]=linux-perf)
missing=()
for tool in "${!packages[@]}"; do
    command -v "$tool" >/dev/null || missing+=("${packages[$tool]}")
done
if [ ${#missing[@]} -gt 0 ]; then
    sudo=()
    [ "$(id -u)" -ne 0 ] && sudo=(sudo)
    if [ "$(id -u)" -ne 0 ] && ! command -v sudo >/dev/null; then
        echo "needs: apt-get install ${missing[*]}" >&2
        exit 2
    fi
    echo "Installing: ${missing[*]}" >&2
    "${sudo[@]}" apt-get update -qq
    DEBIAN_FRONTEND=noninteractive "${sudo[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >&2
fi
# perf needs the right to count its own processes (kernel.perf_event_paranoid <= 2).
perf_ok=yes
perf stat -x, -e task-clock -o /dev/null -- true 2>/dev/null || perf_ok=no

slots=$(nproc)
((slots > 8)) && slots=8
# The MP3 line of `options`: the option text a conversion puts before the two file names.
options=$("$cli" options 2>/dev/null | awk -F '\t' '$1 == "Mp3" { print $2 }')
[ -n "$options" ] || { echo "kestrelvane-cli options gave no MP3 options" >&2; exit 2; }

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# COUNT copies of one sox-made WAV: the file doubled until long enough, then cut apart.
make_set() { # dir count
    mkdir -p "$1"
    sox -q -n -r 44100 -c 1 -b 16 "$work/one.wav" synth 0.05 pinknoise vol 0.3
    local size
    size=$(stat -c %s "$work/one.wav")
    cp "$work/one.wav" "$work/many"
    while (($(stat -c %s "$work/many") < size * $2)); do
        cat "$work/many" "$work/many" > "$work/twice"
        mv "$work/twice" "$work/many"
    done
    head -c $((size * $2)) "$work/many" | split -b "$size" -a 5 -d --additional-suffix=.wav - "$1/t"
    rm -f "$work/many" "$work/one.wav"
}

clean() { find "$1" -name '*.mp3' -delete; }

# Every job must have ended "Done" with a target, or the figures mean nothing.
check() { # dir count report
    local last made
    last=$(tail -n 1 "$3")
    made=$(find "$1" -name '*.mp3' | wc -l)
    if [ "$last" != "Finished $2 of $2" ] || [ "$made" -ne "$2" ]; then
        echo "run failed: '$last', $made targets" >&2
        exit 1
    fi
}

# "WALL CPU" of the last timed run: elapsed seconds and the CPU seconds of all its processes.
wall_and_cpu() { tail -n 1 "$work/time" | awk '{ printf "%s %.2f", $1, $2 + $3 }'; }

# Prints "WALL CPU CLI_CPU": as above, then the CLI process's own CPU seconds ("-" without perf).
run_cli() { # dir count
    clean "$1"
    if [ $perf_ok = yes ]; then
        /usr/bin/time -f '%e %U %S' -o "$work/time" perf stat --no-inherit -x, -e task-clock -o "$work/perf" -- \
            "$cli" convert --to mp3 --jobs "$slots" "$1" > "$work/report" 2> /dev/null || true
    else
        /usr/bin/time -f '%e %U %S' -o "$work/time" \
            "$cli" convert --to mp3 --jobs "$slots" "$1" > "$work/report" 2> /dev/null || true
    fi
    check "$1" "$2" "$work/report"
    local cpu=-
    [ $perf_ok = yes ] && cpu=$(awk -F, '$3 ~ /^task-clock/ { printf "%.2f", $1 / 1000 }' "$work/perf")
    echo "$(wall_and_cpu) $cpu"
}

run_xargs() { # dir count
    clean "$1"
    # shellcheck disable=SC2016 # expanded by the inner shell
    /usr/bin/time -f '%e %U %S' -o "$work/time" sh -c 'for f in "$1"/*.wav; do printf "%s\0%s\0" "$f" "${f%.wav}.mp3"; done |
        xargs -0 -n 2 -P "$3" "$2" $4' sh "$1" "$codec" "$slots" "$options"
    [ "$(find "$1" -name '*.mp3' | wc -l)" -eq "$2" ] || { echo "xargs run failed" >&2; exit 1; }
    wall_and_cpu
}

# Prints "STAT_CALLS SYSCALLS PEAK_KB" of one traced run.
run_traced() { # dir count
    clean "$1"
    /usr/bin/time -f '%M' -o "$work/time" strace -c -o "$work/strace" -- \
        "$cli" convert --to mp3 --jobs "$slots" "$1" > "$work/report" 2> /dev/null || true
    check "$1" "$2" "$work/report"
    local calls
    calls=$(awk '$NF ~ /^(stat|lstat|fstat|newfstatat|statx)$/ { n += $4 } $NF == "total" { t = $4 }
                 END { printf "%d %d", n, t }' "$work/strace")
    echo "$calls $(tail -n 1 "$work/time")"
}

ratio() { awk -v a="$1" -v b="$2" 'BEGIN { printf "%.3f", a / b }'; }

echo "kestrelvane-cli convert --to mp3 --jobs $slots, tiny WAVs; xargs -0 -n 2 -P $slots codec/lame $options"
# The CPU ratio compares the CPU time of all processes of each run: it is less moved than the
# elapsed time by other work on the machine, and shows what the CLI costs beyond the codecs.
printf '%-7s %-6s %9s %8s %9s %9s %7s %9s\n' jobs round "cli s" "ms/job" "cli CPU s" "xargs s" ratio "CPU ratio"
declare -A perjob
traced=()
for n in "${counts[@]}"; do
    dir=$work/set$n
    make_set "$dir" "$n"
    cat "$dir"/t*.wav > /dev/null
    sum=0
    for round in 1 2; do
        # A failed run ends the script: the assignments pass on the exit status.
        if ((round == 1)); then
            cli_run=$(run_cli "$dir" "$n")
            xargs_run=$(run_xargs "$dir" "$n")
        else
            xargs_run=$(run_xargs "$dir" "$n")
            cli_run=$(run_cli "$dir" "$n")
        fi
        read -r wall tree cpu <<< "$cli_run"
        read -r xargs_wall xargs_tree <<< "$xargs_run"
        sum=$(awk -v s="$sum" -v w="$wall" 'BEGIN { print s + w }')
        printf '%-7s %-6s %9.2f %8.2f %9s %9.2f %7s %9s\n' "$n" "$round" "$wall" \
            "$(awk -v w="$wall" -v n="$n" 'BEGIN { print w * 1000 / n }')" "$cpu" "$xargs_wall" \
            "$(ratio "$wall" "$xargs_wall")" "$(ratio "$tree" "$xargs_tree")"
    done
    perjob[$n]=$(awk -v s="$sum" -v n="$n" 'BEGIN { print s / 2 * 1000 / n }')
    if [ $trace = yes ]; then
        traced_run=$(run_traced "$dir" "$n")
        traced+=("$n $traced_run")
    fi
    rm -rf "$dir"
done

first=${counts[0]}
last=${counts[-1]}
if [ "$first" != "$last" ]; then
    printf 'time per job, mean of both rounds: %s jobs %.2f ms, %s jobs %.2f ms: %sx (goal <= 1.10)\n' \
        "$first" "${perjob[$first]}" "$last" "${perjob[$last]}" "$(ratio "${perjob[$last]}" "${perjob[$first]}")"
fi
if [ ${#traced[@]} -gt 0 ]; then
    printf '%-7s %11s %11s %9s   (strace -c on the CLI process; GNU time)\n' jobs "stat calls" syscalls "peak MB"
    for row in "${traced[@]}"; do
        read -r n stats calls kb <<< "$row"
        printf '%-7s %11d %11d %9.1f\n' "$n" "$stats" "$calls" "$(awk -v k="$kb" 'BEGIN { print k / 1024 }')"
    done
fi
