#!/usr/bin/env bash
# fuzz.sh HOURS [NAME...]: runs all fuzzers, or those named (hostile_camera ...), for so many hours
# together (0.1 is six minutes), each on half of the machine's processors; see docs/fuzzing.md. What they
# find out stays in build/corpus/; ends with a table, and fails when one has found a fault.
source "$(dirname "$0")/setup.sh"

if ! [[ ${1-} =~ ^[0-9]+(\.[0-9]+)?$ ]]; then
  echo "usage: fuzz.sh HOURS [NAME...]" >&2
  exit 2
fi
hours=$1
shift
names=("$@")
if [ ${#names[@]} -eq 0 ]; then
  for source in fuzz/*_fuzzer.cpp; do
    names+=("$(basename "$source" _fuzzer.cpp)")
  done
fi

step "packages" install_missing "${native_packages[@]}"
step "configure fuzz" cmake --preset fuzz
step "build the fuzzers" cmake --build --preset fuzz --target "${names[@]/%/_fuzzer}"

seconds=$(awk -v hours="$hours" -v names=${#names[@]} \
  'BEGIN { seconds = int(hours * 3600 / names); print (seconds > 0 ? seconds : 1) }')
jobs=$((($(nproc) + 1) / 2))
status=0
table=()
for name in "${names[@]}"; do
  corpus=build/corpus/$name
  logs=build/log/fuzz-$name
  rm -rf "$logs"
  mkdir -p "$corpus" "$logs"
  echo "$name: $seconds s"
  runs=()
  for ((job = 1; job <= jobs; ++job)); do
    # A fault's input stays beside the corpus.
    build/fuzz/"${name}_fuzzer" -max_total_time="$seconds" -timeout=60 -rss_limit_mb=4096 -reload=1 \
      -print_final_stats=1 -artifact_prefix=build/corpus/"$name-" \
      "$corpus" fuzz/seeds/"$name" >"$logs/$job.log" 2>&1 &
    runs+=($!)
  done
  fault=no
  for run in "${runs[@]}"; do
    wait "$run" || fault=yes
  done
  [ $fault = no ] || status=1
  # What is kept of a long run is the part that covers as much.
  if [ $fault = no ]; then
    mkdir -p "$corpus.kept"
    build/fuzz/"${name}_fuzzer" -merge=1 "$corpus.kept" "$corpus" >"$logs/merge.log" 2>&1
    rm -rf "$corpus"
    mv "$corpus.kept" "$corpus"
  fi
  table+=("$(awk -v name="$name" -v seconds="$seconds" -v fault=$fault '
    /stat::number_of_executed_units/ { executions += $2 }
    / cov: / { for (i = 1; i < NF; ++i) if ($i == "cov:" && $(i + 1) > covered) covered = $(i + 1) }
    /inline 8-bit counters/ { split($0, part, /[()]/); edges = part[2] + 0 }
    END { printf "%-20s %12d %9d %8d %8d  %s", name, executions, executions / seconds, covered, edges,
          fault == "yes" ? "FAULT" : "none" }' "$logs"/[0-9]*.log)")
done

printf '\n%-20s %12s %9s %8s %8s  %s\n' fuzzer executions "a second" edges of faults
printf '%s\n' "${table[@]}"
if [ $status -ne 0 ]; then
  echo "The inputs are in build/corpus/NAME-crash-..., what was said of them in build/log/fuzz-NAME/."
fi
exit $status
