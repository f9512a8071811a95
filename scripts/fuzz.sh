#!/usr/bin/env bash
# Builds the libFuzzer targets of fuzz/ with clang, makes their seed corpora from
# the project's own samples and generated plugins, and runs each for a bounded
# time. Fails when any target finds a crash, a hang, a leak or a sanitizer
# report, printing the reproducer and how to run it again.
#
# Usage: scripts/fuzz.sh [--time SECONDS] [--only NAME]... [--planted-fault] [--keep-corpus]
#   --time SECONDS   per target (default 60)
#   --only NAME      run only this target (text_sources, ff_code, ...); may repeat
#   --planted-fault  build with one bounds check left out (one unit rebuilt):
#                    the run must fail, which shows that the step catches faults
#   --keep-corpus    start from the corpus of an earlier run as well as the seeds
# Environment: TREL_FUZZ_JOBS build jobs (default: nproc); TREL_FUZZ_PARALLEL
# targets run at once (default 2).
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/deps.sh
root=$PWD
seconds=60
only=()
dir=build-fuzz
planted=OFF
keep=0
while (($#)); do
  case "$1" in
    --time) seconds=$2; shift 2 ;;
    --only) only+=("$2"); shift 2 ;;
    --planted-fault) planted=ON; shift ;;
    --keep-corpus) keep=1; shift ;;
    *) echo "fuzz.sh: unknown argument $1" >&2; exit 2 ;;
  esac
done

launcher=()
command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache -DCMAKE_C_COMPILER_LAUNCHER=ccache)
# Optimised but with line tables and assertions, as the sanitizers like it.
cmake -S . -B "$dir" -G Ninja -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DCMAKE_CXX_FLAGS_RELWITHDEBINFO="-O1 -g" -DCMAKE_C_FLAGS_RELWITHDEBINFO="-O1 -g" -DTREL_FUZZ=ON -DTREL_FUZZ_PLANTED_FAULT=$planted \
  -DTREL_BUILD_GUI=OFF -DTREL_BUILD_TESTS=OFF -DTREL_BUILD_BENCH=OFF "${launcher[@]}" >/dev/null
cmake --build "$dir" -j "${TREL_FUZZ_JOBS:-$(nproc)}" --target trel_fuzzers

seeds=$dir/seeds
rm -rf "$seeds"
"$dir/fuzz/trel_fuzz_seeds" data/samples "$seeds"

export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1:symbolize=1
export LSAN_OPTIONS="suppressions=$root/tests/lsan.supp:print_suppressions=0"
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1

targets=()
for exe in "$dir"/fuzz/fuzz_*; do
  name=${exe##*/fuzz_}
  if ((${#only[@]})) && [[ " ${only[*]} " != *" $name "* ]]; then continue; fi
  targets+=("$name")
done
((${#targets[@]})) || { echo "fuzz.sh: no targets" >&2; exit 2; }

# Runs one target; its log and exit status land beside its findings, so that
# targets can run side by side and be reported in order afterwards.
run_target() {
  local name=$1 corpus=$dir/corpus/$1 findings=$dir/findings/$1
  ((keep)) || rm -rf "$corpus"
  rm -rf "$findings"
  mkdir -p "$corpus" "$findings" "$seeds/$name"
  local args=(-max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -print_final_stats=1
              -artifact_prefix="$findings/")
  [[ -f fuzz/$name.dict ]] && args+=(-dict="fuzz/$name.dict")
  local status=0
  "$dir/fuzz/fuzz_$name" "${args[@]}" "$corpus" "$seeds/$name" >"$dir/findings/$name.log" 2>&1 || status=$?
  echo "$status" >"$dir/findings/$name.status"
}

# Two targets at a time by default (TREL_FUZZ_PARALLEL): each is one process
# on one core, so a two-core machine does the step in half the time.
parallel=${TREL_FUZZ_PARALLEL:-2}
running=0
for name in "${targets[@]}"; do
  echo "== $name: ${seconds}s"
  run_target "$name" &
  running=$((running + 1))
  if ((running >= parallel)); then wait -n || true; running=$((running - 1)); fi
done
wait

failed=()
summary=()
for name in "${targets[@]}"; do
  findings=$dir/findings/$name
  log=$dir/findings/$name.log
  status=$(cat "$dir/findings/$name.status" 2>/dev/null || echo 1)
  stats=$(grep -E '^(stat::number_of_executed_units|stat::average_exec_per_sec|stat::peak_rss_mb)' "$log" |
          sed 's/^stat:://' | tr '\n' ' ')
  cov=$(grep -oE 'cov: [0-9]+ ft: [0-9]+' "$log" | tail -n 1 || true)
  summary+=("$name: $cov $stats")
  reproducer=$(find "$findings" -type f | head -n 1)
  if ((status != 0)) || [[ -n $reproducer ]]; then
    failed+=("$name")
    echo "!! $name failed (exit $status)"
    grep -E 'ERROR: |SUMMARY: |runtime error|Assertion|#[0-9]+ 0x' "$log" | head -n 40 || true
    if [[ -n $reproducer ]]; then
      echo "-- reproducer $reproducer ($(stat -c %s "$reproducer") bytes), first bytes:"
      head -c 256 "$reproducer" | od -A d -c | head -n 12
      echo "-- run it again: $dir/fuzz/fuzz_$name $reproducer"
    else
      tail -n 30 "$log"
    fi
  fi
done

echo "== summary (coverage, executions, executions per second, peak memory)"
printf '%s\n' "${summary[@]}"
if ((${#failed[@]})); then
  echo "fuzz.sh: findings in: ${failed[*]}" >&2
  exit 1
fi
echo "fuzz.sh: no findings"
