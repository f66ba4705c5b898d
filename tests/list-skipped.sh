# Run by CTest after the tests, in the build directory: prints what was skipped, and why.
# shellcheck disable=SC2012  # the names are CTest's own
newest=$(ls -t Testing/Temporary/LastTest.log* 2>/dev/null | head -n 1)
[ -z "$newest" ] || awk '
    /^[0-9]+\/[0-9]+ Test: / { name = $3 }
    /^skipped: / { print name " " $0 }
    /: Skipped$/ { getline; print name " skipped: " $0 }' "$newest"
exit 0
