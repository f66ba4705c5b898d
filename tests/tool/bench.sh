# The speed of the functions on this machine.
. "$(dirname "$0")/kit.sh"

# Every case of every function runs, at a size where that takes no time.
"$korframe" bench --size 32x18 --function '*' --time 0 >table.txt 2>stderr.txt || fail "bench ended with $?: $(cat stderr.txt)"
[ ! -s stderr.txt ] || fail "bench said: $(cat stderr.txt)"
[ "$(grep '^Kor' table.txt | cut -d' ' -f1 | sort -u | wc -l)" -eq 38 ] || fail "not 38 functions: $(cat table.txt)"
grep -q "^function  *option  *ratio  *ms  *Mpixel/s$" table.txt || fail "the head of the table: $(head -3 table.txt)"

# The short table: every function, but few options.
"$korframe" bench --size 64x64 --time 0 >short.txt || fail "the short table ended with $?"
[ "$(grep '^Kor' short.txt | cut -d' ' -f1 | sort -u | wc -l)" -eq 38 ] || fail "not 38 functions: $(cat short.txt)"
[ "$(wc -l <short.txt)" -lt "$(wc -l <table.txt)" ] || fail "the short table is not short"

"$korframe" bench --size 64x64 --time 0 --function 'planarrotation*270' >one.txt || fail "one function ended with $?"
[ "$(grep -c '^Kor' one.txt)" -eq 1 ] || fail "not one case: $(cat one.txt)"
grep -q '^KorPlanarRotation_C_  *270 ' one.txt || fail "another case: $(cat one.txt)"

# The end of a label.
"$korframe" bench --size 64x64 --time 0 --function 'KorBGRAToI420_C_$' >one.txt || fail "a whole name ended with $?"
[ "$(grep -c '^Kor' one.txt)" -eq 1 ] || fail "not one case: $(cat one.txt)"

refuses 2 "--function nothing: no function or option is named so" bench --function nothing
refuses 2 "--size 63x64: both sides must be even" bench --size 63x64
refuses 2 "--size 64: width and height are wanted" bench --size 64
refuses 2 "--time soon: seconds between 0 and 60 are wanted" bench --time soon
refuses 2 "--time 1s: seconds between 0 and 60 are wanted" bench --time 1s
refuses 2 "--time -1: seconds between 0 and 60 are wanted" bench --time -1
refuses 2 "--time nan: seconds between 0 and 60 are wanted" bench --time nan

finish
