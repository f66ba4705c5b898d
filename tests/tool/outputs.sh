# Where output goes, and what remains after a failure.
. "$(dirname "$0")/common.sh"

# The program itself.
"$korframe" --version | grep -q '^korframe [0-9]*\.[0-9]*\.[0-9]* (target [a-z0-9]*)$' || fail "--version"
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
# An error is told however quiet the program is to be.
refuses 1 "missing.png: cannot be opened: No such file or directory" convert missing.png out.y4m --quiet

# A full device, and a reader that goes away.
if [ -w /dev/full ]; then
    refuses 1 "/dev/full: cannot be written: No space left on device" convert card.png /dev/full --to y4m
fi
works testcard wide.png --size 1280x720 # more than a pipe of 1 MiB holds
{ "$korframe" convert wide.png - --to bgra 2>stderr.txt; echo $? >status.txt; } | head -c 1 >/dev/null
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

# Waits for a run in the background to have its temporary file in a directory.
await_temporary() {
    tries=0
    while [ -z "$(find "$1" -name '.korframe-??????.tmp' -type f)" ] && [ $tries -lt 50 ]; do
        sleep 0.1
        tries=$((tries + 1))
    done
}

# An unfinished file disappears when a signal ends the program.
mkfifo never
for signal in INT TERM HUP; do
    # A shell starts background jobs with SIGINT ignored, which they inherit; env restores it.
    exec 9<>never
    env --default-signal=INT,TERM,HUP "$korframe" convert never self --to y4m --from i420 --size 64x64 2>/dev/null &
    job=$!
    head -c 6144 /dev/zero >&9
    await_temporary .
    kill -$signal $job
    wait $job
    status=$?
    exec 9>&-
    [ $status -gt 128 ] || fail "SIG$signal: exited with $status"
    leaves_nothing
    same self fresh.y4m
done

# A pattern has one place for a number.
refuses 2 "out-%d-%d.png: has two places for a number; expected one, for example frame-%04d.png" convert card.ppm out-%d-%d.png

# A read-only file stays, even for root, unless it is meant.
cp fresh.y4m protected.y4m
chmod 444 protected.y4m
refuses 1 "protected.y4m: is read-only; expected another name, or add --force to replace it" convert card.ppm protected.y4m --mirror
same protected.y4m fresh.y4m
works convert card.ppm protected.y4m --mirror --force
cmp -s protected.y4m fresh.y4m && fail "--force did not replace a read-only file"
[ "$(stat -c %a protected.y4m)" = 444 ] || fail "the mode of a read-only file changed to $(stat -c %a protected.y4m)"
cp card.ppm protected-1.png
chmod 444 protected-1.png
refuses 1 "protected-1.png: is read-only" convert card.ppm protected-%d.png
refuses 1 "protected-1.png: is read-only" testcard protected-1.png
works testcard protected-1.png --force
mkdir stages
printf 'mine' >stages/3-captured.png
chmod 444 stages/3-captured.png
refuses 1 "stages/3-captured.png: is read-only" demo stages
works demo stages --force >stdout.txt

# A link to nothing is followed.
mkdir target
ln -s target/new.y4m dangling.y4m
ln -s dangling.y4m twice.y4m
works convert card.ppm twice.y4m
[ -L twice.y4m ] && [ -L dangling.y4m ] || fail "a dangling link was replaced"
same target/new.y4m fresh.y4m
ln -s nowhere/new.y4m lost.y4m
refuses 1 "lost.y4m: cannot be created: No such file or directory" convert card.ppm lost.y4m

# Standard output under its other names: a file there is written, not replaced.
if [ -e /dev/stdout ]; then
    for name in /dev/stdout /dev/fd/1 /proc/self/fd/1; do
        [ -e $name ] || continue
        printf 'before' >redirected
        ln redirected same-file
        "$korframe" convert card.ppm $name >>redirected 2>stderr.txt || fail "$name: $(cat stderr.txt)"
        same redirected same-file
        { printf 'before'; cat fresh.y4m; } >expected
        same redirected expected
        rm same-file
    done
    ln -s /dev/stdout to-stdout
    "$korframe" convert card.ppm to-stdout >redirected 2>stderr.txt || fail "a link to /dev/stdout: $(cat stderr.txt)"
    same redirected fresh.y4m
    [ -L to-stdout ] || fail "a link to /dev/stdout was replaced"
    "$korframe" convert card.ppm /dev/fd/3 --to y4m 3>redirected 2>stderr.txt || fail "/dev/fd/3: $(cat stderr.txt)"
    same redirected fresh.y4m
    refuses 1 "/dev/fd/9: cannot be opened: Bad file descriptor" convert card.ppm /dev/fd/9 --to y4m
fi
"$korframe" testcard - --size 320x180 >piped.png 2>stderr.txt || fail "testcard -: $(cat stderr.txt)"
works compare piped.png card.ppm

# Frames do not go to a terminal unless that is meant.
if script -qec true /dev/null >/dev/null 2>&1 </dev/null; then
    for arguments in "convert card.ppm -" "testcard -" "convert card.ppm /dev/stdout --to bgra"; do
        script -qec "'$korframe' $arguments" /dev/null >terminal.txt </dev/null
        status=$?
        [ $status -eq 2 ] || fail "$arguments to a terminal exited with $status"
        [ "$(tr -d '\r' <terminal.txt)" = "korframe: standard output: is a terminal; expected a file or a pipe, or add --force" ] || fail "$arguments to a terminal: $(head -c 200 terminal.txt)"
    done
    script -qec "'$korframe' testcard - --size 64x64 --force" /dev/null >terminal.txt </dev/null || fail "--force to a terminal"
    grep -qa PNG terminal.txt || fail "--force wrote nothing to a terminal"
else
    skips "script, which makes a terminal, is not installed or gets none"
fi

# When an input breaks off, the frames before the break lie under a name of their own, and nothing is replaced.
head -c $(($(wc -c <fresh.y4m) - 1)) fresh.y4m >second
{ cat fresh.y4m; tail -n +2 second; } >broken
cp protected.y4m good.y4m
chmod 640 good.y4m
cp good.y4m good.before
for name in good.partial.y4m good.partial-2.y4m good.partial-3.y4m; do
    refuses 1 "bytes are missing; the frame before it is in $name" convert broken good.y4m
    same good.y4m good.before
    same $name fresh.y4m
done
refuses 1 "bytes are missing; the frame before it is in good.y4m" convert broken good.y4m --keep-partial
same good.y4m fresh.y4m
[ "$(stat -c %a good.y4m)" = 640 ] || fail "--keep-partial changed the mode to $(stat -c %a good.y4m)"
mkdir odd.name
refuses 1 "the frame before it is in odd.name/good.partial" convert broken odd.name/good --to y4m
refuses 1 "the frame before it is in odd.name/.good.partial" convert broken odd.name/.good --to y4m
refuses 1 "the frame before it is in one.partial.png" convert broken one.png
refuses 1 "bytes are missing; the frame before it is in the output" convert broken many-%d.png
[ -s many-1.png ] || fail "no many-1.png"
absent many-2.png one.png odd.name/good
"$korframe" convert broken - >redirected 2>stderr.txt
[ $? -eq 1 ] || fail "a broken input to standard output did not exit with 1"
same redirected fresh.y4m
head -c 100 fresh.y4m >nothing
refuses 1 "frame 1 is truncated" convert nothing good.y4m
grep -q "before it" stderr.txt && fail "frames were kept where there are none: $(cat stderr.txt)"
same good.y4m fresh.y4m

# A temporary file that a killed process left is removed by the next run that writes there; one that a living process owns
# stays, and so does everything else.
mkdir litter
for name in .korframe-abcdef.tmp .korframe-ABC123.tmp; do echo left >litter/$name; done
for name in .korframe-abcdefg.tmp .korframe-abcde.tmp .korframe-abcdef other.tmp good.partial.y4m; do echo mine >litter/$name; done
mkdir litter/.korframe-direct.tmp
ln -s ../fresh.y4m litter/.korframe-linked.tmp
echo owned >litter/.korframe-locked.tmp
if command -v flock >/dev/null; then
    flock litter/.korframe-locked.tmp "$korframe" convert card.ppm litter/out.y4m || fail "beside an owned file"
    [ -e litter/.korframe-locked.tmp ] || fail "a file with an owner was removed"
else
    skips "flock is not installed"
fi
works convert card.ppm litter/out.y4m
absent litter/.korframe-abcdef.tmp litter/.korframe-ABC123.tmp litter/.korframe-locked.tmp
[ "$(find litter ! -name litter | sort | tr '\n' ' ')" = "litter/.korframe-abcde.tmp litter/.korframe-abcdef litter/.korframe-abcdefg.tmp litter/.korframe-direct.tmp litter/.korframe-linked.tmp litter/good.partial.y4m litter/other.tmp litter/out.y4m " ] || fail "litter holds $(find litter | sort)"
# Nor does one run of this program take away what another is writing.
exec 9<>never
"$korframe" convert never litter/slow.y4m --from i420 --size 64x64 9>&- &
job=$!
head -c 6144 /dev/zero >&9
await_temporary litter
works convert card.ppm litter/out.y4m
exec 9>&-
wait $job || fail "two runs in one directory: the first exited with $?"
[ "$(grep -ac FRAME litter/slow.y4m)" -eq 1 ] || fail "two runs in one directory: the first is lost"
rm -r litter

# Files that replace others are flushed before they do, numbered pictures together at the end, and new ones not at all.
if can_trace; then
    flushes() {
        wanted=$1
        shift
        traced -e trace=fsync,syncfs "$korframe" convert "$@" || fail "under strace: $*"
        found=$(grep -oE '(fsync|syncfs)\(' trace.txt | tr '(\n' '  ' | tr -s ' ') # a call may be resumed in a line of its own
        [ "$found" = "$wanted" ] || fail "convert $* flushes by '$found', expected '$wanted'"
    }
    { cat fresh.y4m; tail -n +2 fresh.y4m; tail -n +2 fresh.y4m; } >three.y4m
    flushes "" three.y4m new.y4m
    flushes "fsync " three.y4m new.y4m
    flushes "" three.y4m new-%d.png
    flushes "syncfs " three.y4m new-%d.png
    # Frames are written in pieces of 128 KiB and what is left.
    traced -e trace=write "$korframe" convert wide.png new.bgra
    largest=$(grep -oE '= [0-9]+$' trace.txt | cut -c 3- | sort -n | tail -1)
    [ "$largest" = 131072 ] || fail "a frame is written $largest bytes at a time"
else
    skips "strace is not installed or not allowed"
fi

# The report is one line, whatever bytes a name contains.
refuses 1 "a?b.png: cannot be opened" convert "$(printf 'a\nb.png')" out.y4m

finish
