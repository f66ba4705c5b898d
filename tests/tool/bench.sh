# The speed of the functions on this machine.
. "$(dirname "$0")/common.sh"

# Every case of every function runs, at a size that takes no time.
"$korframe" bench --size 32x18 --function '*' --time 0 >table.txt 2>stderr.txt || fail "bench exited with $?: $(cat stderr.txt)"
[ ! -s stderr.txt ] || fail "bench printed: $(cat stderr.txt)"
grep -q '^target [a-z0-9]*$' table.txt || fail "bench does not name the target: $(head -3 table.txt)"
[ "$(grep '^Kor' table.txt | cut -d' ' -f1 | sort -u | wc -l)" -eq 38 ] || fail "not 38 functions: $(cat table.txt)"
grep -q "^function  *option  *ratio  *ms  *Mpixel/s$" table.txt || fail "the head of the table: $(head -3 table.txt)"

# The short table has every function but few options.
"$korframe" bench --size 64x64 --time 0 >short.txt || fail "the short table exited with $?"
[ "$(grep '^Kor' short.txt | cut -d' ' -f1 | sort -u | wc -l)" -eq 38 ] || fail "not 38 functions: $(cat short.txt)"
[ "$(wc -l <short.txt)" -lt "$(wc -l <table.txt)" ] || fail "the short table is not short"

"$korframe" bench --size 64x64 --time 0 --function 'planarrotation*270' >one.txt || fail "one function exited with $?"
[ "$(grep -c '^Kor' one.txt)" -eq 1 ] || fail "not one case: $(cat one.txt)"
grep -q '^KorPlanarRotation  *270 ' one.txt || fail "another case: $(cat one.txt)"

# The end of a label.
"$korframe" bench --size 64x64 --time 0 --function 'KorBGRAToI420$' >one.txt || fail "a whole name exited with $?"
[ "$(grep -c '^Kor' one.txt)" -eq 1 ] || fail "not one case: $(cat one.txt)"

refuses 2 "--function nothing: matches no function or option; part of a name is enough, for example BGRAToI420, and * matches anything" bench --function nothing
refuses 2 "--size: expected two even sides, for example 1280x720, not '63x64'" bench --size 63x64
refuses 2 "--size: expected WIDTHxHEIGHT, for example 1280x720, not '64'" bench --size 64
refuses 2 "--time: expected seconds from 0 to 60, for example 0.5, not 'soon'" bench --time soon
refuses 2 "--time: expected seconds from 0 to 60, for example 0.5, not '1s'" bench --time 1s
refuses 2 "--time: expected seconds from 0 to 60, for example 0.5, not '-1'" bench --time -1
refuses 2 "--time: expected seconds from 0 to 60, for example 0.5, not 'nan'" bench --time nan

finish
