# Run by CTest after the tests, in the build directory: prints what they left out, and why.
# shellcheck disable=SC2012  # the names are CTest's own
newest=$(ls -t Testing/Temporary/LastTest.log* 2>/dev/null | head -n 1)
[ -z "$newest" ] || grep '^skipped: ' "$newest" | sort -u
exit 0
