# Killed at random moments, by any signal: an existing file is the old one or the complete new one, nothing else is
# damaged, and what is left behind goes away with the next run.
. "$(dirname "$0")/common.sh"

rounds=50
seed=${KOR_TEST_SEED:-$(($(date +%s) % 1000000))}
echo "seed $seed (set KOR_TEST_SEED to repeat it)"
# A number below a limit, in `random`: not in a subshell, which would lose the state.
draw() {
    seed=$(((seed * 1103515245 + 12345) % 2147483648))
    random=$((seed / 65536 % $1))
}

works testcard card.png --size 640x360
works convert card.png old.y4m
works convert card.png one.y4m --mirror
{ cat one.y4m; for _ in $(seq 1 60); do tail -n +2 one.y4m; done; } >clip.y4m
works convert clip.y4m new.y4m --flip
works convert clip.y4m expected-%02d.png --flip
mkdir out
echo mine >out/clip.partial.y4m
echo mine >out/.korframe-notes

start=$(date +%s%N)
works convert clip.y4m time.y4m --flip
millisecond=$((($(date +%s%N) - start) / 1000000 + 1))

left=0
unfinished=0
for round in $(seq 1 $rounds); do
    cp old.y4m out/clip.y4m
    draw 4
    # A shell starts background jobs with SIGINT ignored, which they inherit; env restores it.
    case $random in
        0) signal=INT ;;
        1) signal=TERM ;;
        2) signal=HUP ;;
        3) signal=KILL ;;
    esac
    case $((round % 5)) in
        0) output=out/picture-%02d.png ;;
        *) output=out/clip.y4m ;;
    esac
    env --default-signal=INT,TERM,HUP "$korframe" convert clip.y4m $output --flip 2>stderr.txt &
    job=$!
    draw $((millisecond * 5 / 4))
    sleep "$(printf '0.%03d' $((random % 1000)))"
    kill -"$signal" $job 2>/dev/null
    wait $job
    [ $? -gt 128 ] && unfinished=$((unfinished + 1))
    [ ! -s stderr.txt ] || fail "round $round printed: $(cat stderr.txt)"
    cmp -s out/clip.y4m old.y4m || cmp -s out/clip.y4m new.y4m || fail "SIG$signal in round $round damaged an existing file"
    for picture in out/picture-*.png; do
        [ ! -e "$picture" ] || cmp -s "$picture" "expected-${picture#out/picture-}" || fail "SIG$signal in round $round damaged $picture"
    done
    here=$(find out -name '.korframe-*.tmp' | wc -l)
    [ "$here" -le 1 ] || fail "round $round: $here temporary files"
    # Each numbered picture has a temporary file of its own, which a signal may just miss.
    [ "$here" -eq 0 ] || [ "$signal" = KILL ] || [ $((round % 5)) -eq 0 ] || [ "$here" -le "$left" ] || fail "SIG$signal in round $round left a temporary file"
    left=$here
done
echo "$unfinished of $rounds runs were killed before they were done"
[ $unfinished -gt 0 ] || fail "no run was killed"

# The next run removes what is left, and never partial results.
env "$korframe" convert clip.y4m out/clip.y4m --flip &
job=$!
sleep 0.02
kill -KILL $job 2>/dev/null
wait $job 2>/dev/null
works convert clip.y4m out/clip.y4m --flip
same out/clip.y4m new.y4m
[ -z "$(find out -name '.korframe-*.tmp')" ] || fail "temporary files remain: $(find out -name '.korframe-*.tmp')"
[ "$(cat out/clip.partial.y4m)" = mine ] && [ "$(cat out/.korframe-notes)" = mine ] || fail "files of the user were removed"

finish
