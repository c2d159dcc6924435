# Sourced by scripts/test and .ci/run: runs checks, counts what passed and failed, and says so at the end.
# One check is one command; a ctest run counts each of its tests.

passed=0
failed=0
failures=()
times=()

# took NAME STARTED: notes how long something took, for the summary at the end.
took() {
    times+=("$(printf '%6d s  %s' $((SECONDS - $2)) "$1")")
}

# check NAME COMMAND...: passes if the command does. The output is shown as it comes.
check() {
    local name=$1 started=$SECONDS
    shift
    echo "==== $name"
    local status=0
    "$@" || status=$?
    took "$name" "$started"
    if ((status == 0)); then
        passed=$((passed + 1))
        echo "---- $name: passed ($((SECONDS - started)) s)"
    else
        failed=$((failed + 1))
        failures+=("$name")
        echo "---- $name: FAILED ($((SECONDS - started)) s)"
        return 1
    fi
}

# count_tests NAME BUILD_DIR [PREFIX... --] CTEST_ARGUMENTS...: PREFIX is a command to run ctest in.
# Finding no test, or ctest ending before its report, counts as a failure.
count_tests() {
    local name=$1 build_dir=$2 prefix=() started=$SECONDS report status=0
    shift 2
    if [[ " $* " == *" -- "* ]]; then
        while [[ $1 != -- ]]; do
            prefix+=("$1")
            shift
        done
        shift
    fi
    report=$(readlink -f "$build_dir")/tests-${name//[^A-Za-z0-9]/-}.xml
    rm -f "$report"
    echo "==== $name"
    "${prefix[@]}" ctest --test-dir "$build_dir" --output-on-failure --no-tests=error --output-junit "$report" "$@" || status=$?
    local total=0 bad=0 skipped=0
    if [[ -s $report ]]; then
        read -r total bad skipped < <(junit_counts "$report")
    fi
    if ((status != 0 && bad == 0)) || ((total == 0)); then
        bad=$((bad + 1))
        total=$((total + 1))
    fi
    took "$name" "$started"
    passed=$((passed + total - bad - skipped))
    failed=$((failed + bad))
    if ((bad > 0)); then
        failures+=("$name ($bad)")
    fi
    echo "---- $name: $((total - bad - skipped)) passed, $bad failed, $skipped skipped ($((SECONDS - started)) s)"
}

# Tests, failures, and tests that did not run, of a ctest report.
junit_counts() {
    python3 - "$1" <<'PYTHON'
import sys
import xml.etree.ElementTree
suite = xml.etree.ElementTree.parse(sys.argv[1]).getroot()
print(suite.get("tests"), suite.get("failures"), int(suite.get("skipped")) + int(suite.get("disabled")))
PYTHON
}

# count_script NAME COMMAND...: adds the counts in the last line of a script that has its own.
count_script() {
    local name=$1 started=$SECONDS output last
    shift
    output=$(mktemp)
    "$@" | tee "$output"
    took "$name" "$started"
    last=$(tail -n 1 "$output")
    rm -f "$output"
    if [[ $last =~ ^([0-9]+)\ passed,\ ([0-9]+)\ failed$ ]]; then
        passed=$((passed + BASH_REMATCH[1]))
        failed=$((failed + BASH_REMATCH[2]))
        if ((BASH_REMATCH[2] > 0)); then
            failures+=("$name (${BASH_REMATCH[2]})")
        fi
    else
        failed=$((failed + 1))
        failures+=("$name ended without a count")
    fi
}

# finish: tells how long everything took, names what failed, prints the closing line and ends the script.
finish() {
    printf '%s\n' "${times[@]}"
    printf '%6d s  in all\n' "$SECONDS"
    for name in "${failures[@]}"; do
        echo "failed: $name"
    done
    echo "$passed passed, $failed failed"
    exit $((failed > 0 || passed == 0))
}
