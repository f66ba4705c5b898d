# Where output goes, and what remains after a failure.
. "$(dirname "$0")/common.sh"

# The program itself.
"$korframe" --version | grep -q '^korframe [0-9]*\.[0-9]*\.[0-9]*$' || fail "--version"
"$korframe" --help | grep -q 'convert' || fail "--help"
"$korframe" convert --help | grep -q 'OUTPUT' || fail "convert --help"
refuses 2 "subcommand is required"
refuses 2 "unknown subcommand 'paint'; see korframe --help" paint
refuses 2 "INPUT is required" convert
refuses 2 "INPUT is required" convert --
refuses 2 "unknown option '--foo'; see korframe convert --help" convert --foo
refuses 2 "unknown option '--colour'; see korframe convert --help" convert a b --colour
refuses 2 "unexpected argument 'c'; see korframe convert --help" convert a b c
refuses 2 "--jobs: expected exactly one value; see korframe convert --help" convert a b --jobs
refuses 2 "--jobs: expected exactly one value; see korframe convert --help" convert a b --jobs 1 --jobs 2

# The test card.
works testcard card.png --size 640x360
works testcard card.ppm --size 320x180
[ "$(head -c 15 card.ppm)" = "$(printf 'P6\n320 180\n255')" ] || fail "the size of the card"
works convert card.png card.y4m
[ "$(wc -c <card.y4m)" -eq $((78 + 6 + 640 * 360 * 3 / 2)) ] || fail "the size of card.y4m"
refuses 2 "card.jpg: expected a name that ends in .png or .ppm; a test card is a picture" testcard card.jpg
refuses 2 "--size: expected at least 64 pixels on each side of a test card, not 63x64" testcard x.png --size 63x64
refuses 2 "--size: expected WIDTHxHEIGHT, for example 1280x720, not '10'" testcard x.png --size 10
refuses 2 "--size: expected sides of 1 to 32768 and at most 268435456 pixels, not '0x10'" testcard x.png --size 0x10
refuses 2 "--size: expected sides of 1 to 32768 and at most 268435456 pixels, not '99999x10'" testcard x.png --size 99999x10
refuses 2 "--size: expected sides of 1 to 32768 and at most 268435456 pixels, not '32768x32768'" testcard x.png --size 32768x32768
absent x.png card.jpg

# Requests that cannot be met.
refuses 1 "missing.png: cannot be opened: No such file or directory" convert missing.png out.y4m
refuses 1 ".: is a directory; expected a file, or - for standard input" convert . out.y4m
refuses 1 "there/out.y4m: cannot be created: No such file or directory" convert card.png there/out.y4m
mkdir place
refuses 1 "place: is a directory; expected the name of a file" convert card.png place --to y4m
refuses 2 "out.avi: the name does not say what to write; add --to, or use a name that ends in .y4m, .png, .ppm or the name of a raw layout" convert card.png out.avi
refuses 2 "out.jpg: cannot write JPEG, only read it; expected a name that ends in .png, .ppm, .y4m or the name of a raw layout" convert card.png out.jpg
refuses 2 "--to: expected y4m, y4m:i420, y4m:i422, y4m:i444, png, ppm, i420, i422, i444, nv12, nv21, yuy2, uyvy, yuv2, m420, bgra, rgba, argb, abgr, rgb24 or bgr24, not 'i421'" convert card.png out --to i421
refuses 2 "--to: expected y4m, y4m:i420, y4m:i422, y4m:i444, png, ppm, i420, i422, i444, nv12, nv21, yuy2, uyvy, yuv2, m420, bgra, rgba, argb, abgr, rgb24 or bgr24, not 'y4m:bgra'" convert card.png out --to y4m:bgra
refuses 2 "--order: expected bgra, rgba, argb, abgr, rgb24 or bgr24, not 'grba'" convert card.png out.y4m --order grba
absent out.y4m out out.avi

# A full device, and a reader that goes away.
if [ -w /dev/full ]; then
    refuses 1 "/dev/full: cannot be written: No space left on device" convert card.png /dev/full --to y4m
fi
{ "$korframe" convert card.png - 2>stderr.txt; echo $? >status.txt; } | head -c 1 >/dev/null
[ "$(cat status.txt)" = 1 ] || fail "a closed pipe exited with $(cat status.txt)"
grep -q '^korframe: standard output: cannot be written: Broken pipe' stderr.txt || fail "a closed pipe: $(cat stderr.txt)"
if [ -c /dev/null ]; then
    works convert card.png /dev/null --to y4m
    [ -c /dev/null ] || fail "/dev/null was replaced"
fi

# An existing file stays until the new one is complete, and keeps its mode and links to it.
cp card.y4m kept.y4m
chmod 640 kept.y4m
ln -s kept.y4m link.y4m
works convert card.ppm link.y4m
[ -L link.y4m ] || fail "the link was replaced"
[ "$(stat -c %a kept.y4m)" = 640 ] || fail "the mode changed to $(stat -c %a kept.y4m)"
umask 027
works convert card.ppm fresh.y4m
[ "$(stat -c %a fresh.y4m)" = 640 ] || fail "the mode of a new file is $(stat -c %a fresh.y4m)"
same kept.y4m fresh.y4m
head -c 100 card.png >cut.png
refuses 1 "cut.png: is a damaged PNG file" convert cut.png kept.y4m
same kept.y4m fresh.y4m

# A file can be its own output.
cp card.ppm self
works convert self self --to y4m
same self fresh.y4m

# An unfinished file disappears when a signal ends the program.
mkfifo never
for signal in INT TERM HUP; do
    # A shell starts background jobs with SIGINT ignored, which they inherit; env restores it.
    exec 9<>never
    env --default-signal=INT "$korframe" convert never self --to y4m --from i420 --size 64x64 2>/dev/null &
    job=$!
    head -c 6144 /dev/zero >&9
    tries=0
    while [ -z "$(find . -name '.korframe-*')" ] && [ $tries -lt 50 ]; do
        sleep 0.1
        tries=$((tries + 1))
    done
    kill -$signal $job
    wait $job
    status=$?
    exec 9>&-
    [ $status -gt 128 ] || fail "SIG$signal: exited with $status"
    leaves_nothing
    same self fresh.y4m
done

# The report is one line, whatever bytes a name contains.
refuses 1 "a?b.png: cannot be opened" convert "$(printf 'a\nb.png')" out.y4m

finish
