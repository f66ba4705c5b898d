# How frames flow: which of them, which part of each, on how many threads, and what is told meanwhile.
. "$(dirname "$0")/common.sh"

# Nine frames of 4x2, each of one shade.
for shade in 10 20 30 40 50 60 70 80 90; do repeat 12 $shade; done >clip.i420

# ---- Frames ----

takes() {
    expected=$1
    shift
    works convert clip.i420 out.i420 --size 4x2 "$@"
    found=$(hex out.i420 | awk '{ for (i = 1; i <= NF; i += 12) printf "%s ", $i }')
    [ "$found" = "$expected " ] || fail "$*: frames '$found', expected '$expected '"
}
takes "20 30 40" --frames 2-4
takes "80 90" --frames 8-
takes "10 20" --frames -2
takes "50" --frames 5
takes "90" --frames 9-9 --jobs 3
refuses 1 "clip.i420: has only 9 frames; --frames begins with 10" convert clip.i420 none.i420 --size 4x2 --frames 10-12
for wrong in 0-3 4-2 a - "" 1-2-3; do
    refuses 2 "--frames: expected the first and the last frame, counted from 1, for example 25-49, 25- or -49, not '$wrong'" convert clip.i420 none.i420 --size 4x2 --frames "$wrong"
done
"$korframe" convert clip.i420 out.i420 --size 4x2 --frames 8-12 2>stderr.txt || fail "--frames 8-12"
grep -qF "warning: clip.i420: ends after frame 9; --frames asks for frames up to 12" stderr.txt || fail "--frames 8-12: $(cat stderr.txt)"
[ "$(wc -c <out.i420)" -eq 24 ] || fail "--frames 8-12 gives $(wc -c <out.i420) bytes"
# Overlays start with the first frame taken.
{ printf 'YUV4MPEG2 W2 H2\nFRAME\n'; repeat 6 a8; printf 'FRAME\n'; repeat 6 b8; } >over.y4m
head -c 48 clip.i420 | tail -c 24 >middle.i420
works convert middle.i420 expected --to i420 --size 4x2 --blend over.y4m
works convert clip.i420 out.i420 --size 4x2 --frames 3-4 --blend over.y4m
same out.i420 expected
# Nothing behind the last frame is read.
{ cat clip.i420; printf x; } >broken.i420
works convert broken.i420 out.i420 --size 4x2 --frames 1-9
same out.i420 clip.i420
# From a pipe, too.
"$korframe" convert - - --from i420 --to i420 --size 4x2 --frames 3-4 <clip.i420 >out.i420 || fail "frames of a pipe"
[ "$(hex out.i420 | cut -c 1-2,37-38)" = 3040 ] || fail "frames of a pipe: $(hex out.i420)"

# ---- Crop ----

bytes "01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f 10  a1 a2 a3 a4 b1 b2 b3 b4" >square.i420
works convert square.i420 out.i420 --size 4x4 --crop 2x2+2+0
holds out.i420 "03 04 07 08 a2 b2"
works convert square.i420 out.i420 --size 4x4 --crop 4x2+0+2 --mirror
holds out.i420 "0c 0b 0a 09 10 0f 0e 0d a4 a3 b4 b3"
for layout in nv12 m420 uyvy i444 bgra; do
    works convert square.i420 square.$layout --size 4x4
    works convert square.i420 cropped.i420 --size 4x4 --crop 2x2+2+2
    works convert cropped.i420 expected.$layout --size 2x2
    works convert square.$layout out.$layout --size 4x4 --crop 2x2+2+2
    same out.$layout expected.$layout
done
# An odd part that reaches the edge of an odd picture, and any part without shared chroma.
bytes "01 02 03 04 05 06 07 08 09 a1 a2 a3 a4 b1 b2 b3 b4" >odd.i420
works convert odd.i420 out.i420 --size 3x3 --crop 1x3+2+0
holds out.i420 "03 06 09 a2 a4 b2 b4"
works convert square.bgra out.bgra --size 4x4 --crop 1x1+1+3
tail -c 12 square.bgra | head -c 4 >expected
same out.bgra expected
refuses 2 "--crop: cuts through chroma samples, which i420 has for two columns or rows; expected even numbers" convert square.i420 none.i420 --size 4x4 --crop 2x2+1+0
refuses 2 "--crop: cuts through chroma samples, which i420" convert square.i420 none.i420 --size 4x4 --crop 2x3+0+0
refuses 2 "--crop: reaches beyond the 4x4 frames of square.i420" convert square.i420 none.i420 --size 4x4 --crop 4x4+2+0
for wrong in 4x4 4x4+1 0x2+0+0 2x2+-1+0; do
    refuses 2 "--crop: expected WIDTHxHEIGHT+X+Y, for example 640x360+16+8, not '$wrong'" convert square.i420 none.i420 --size 4x4 --crop "$wrong"
done
{ printf 'YUV4MPEG2 W1 H4 It C444\nFRAME\n'; repeat 12 80; } >fields.y4m
refuses 2 "--crop: an odd row would swap the fields of fields.y4m, which is interlaced" convert fields.y4m none.y4m --crop 1x2+0+1
works convert fields.y4m out.y4m --crop 1x2+0+2
absent none.i420 none.y4m

# ---- Threads ----

# Many frames on many threads keep their order, with noise of a seed the same bytes, without one others in each run.
repeat 600 80 >grey.i420
for count in $(seq 1 200); do printf '%600s' "$count"; done >numbers.i420
works convert numbers.i420 ordered.i420 --size 20x20 --jobs 16 --flip --flip
same ordered.i420 numbers.i420
works convert numbers.i420 one.i420 --size 20x20 --dither 2 --seed 4 --jobs 1
works convert numbers.i420 two.i420 --size 20x20 --dither 2 --seed 4
works convert numbers.i420 three.i420 --size 20x20 --dither 2 --seed 4 --jobs 7
same one.i420 two.i420
same one.i420 three.i420
works convert numbers.i420 four.i420 --size 20x20 --dither 2
works convert numbers.i420 five.i420 --size 20x20 --dither 2
cmp -s four.i420 five.i420 && fail "noise without a seed repeats"

# As many threads as asked for, however many frames there are, and one a processor by default.
if can_trace; then
    threads() {
        expected=$1
        shift
        traced -e trace=clone,clone3 "$korframe" convert numbers.i420 out.i420 --size 20x20 "$@" || fail "under strace: $*"
        started=$(grep -cE 'clone3?(\(| resumed).* = [0-9]+$' trace.txt)
        [ $((started + 1)) -eq "$expected" ] || fail "'$*' works on $((started + 1)) threads, expected $expected"
    }
    threads 1 --jobs 1
    threads 16 --jobs 16
    threads "$(getconf _NPROCESSORS_ONLN)"
else
    skips "numbers of threads: strace is not installed or not allowed"
fi

# While a frame waits to be written, the next are read: as many as there are threads go in before anything is taken out. A
# frame is larger than a pipe of 1 MiB.
overlaps() {
    rm -f taken
    { head -c $(($1 * 1382400)) /dev/zero; : >taken; } |
        "$korframe" convert - - --from i420 --to nv12 --size 1280x720 --jobs "$1" |
        {
            tries=0
            while [ ! -e taken ] && [ $tries -lt 100 ]; do
                sleep 0.1
                tries=$((tries + 1))
            done
            [ -e taken ] || echo "FAILED: fewer than $1 frames are read before the first is written"
            wc -c
        } >overlap.txt
    [ "$(cat overlap.txt)" = $(($1 * 1382400)) ] || fail "on $1 threads: $(cat overlap.txt)"
}
overlaps 2
overlaps 3

# Memory does not grow with the number of frames: 10,000 take what 100 take, but for a megabyte.
if [ -x /usr/bin/time ]; then
    memory() {
        head -c "$1" /dev/zero | /usr/bin/time -f %M "$korframe" convert - /dev/null --from i420 --to bgra --size 320x180 --jobs 4 2>memory.txt || fail "$1 bytes: $(cat memory.txt)"
        cat memory.txt
    }
    few=$(memory 8640000)
    many=$(memory 864000000)
    [ "$many" -lt $((few + 1024)) ] || fail "100 frames take $few KB and 10,000 take $many KB"
else
    skips "memory over 10,000 frames: /usr/bin/time is not installed"
fi

# ---- Progress ----

# On a terminal of 30 columns, until Ctrl-C and to the end: a line that fits, and that is ended.
if python3 -c 'import pty; pty.openpty()' 2>/dev/null; then
    truncate -s 27648000000 long.i420  # 20000 frames, which take no room
    cat >terminal.py <<'PYTHON'
import os, pty, re, signal, subprocess, sys
interrupt = sys.argv[1] == "interrupt"
leader, follower = pty.openpty()
source = subprocess.Popen(["sh", "-c", "for i in 1 2 3 4 5 6 7 8; do head -c 27648000 /dev/zero; sleep 0.2; done"],
                          stdout=subprocess.PIPE)
signal.signal(signal.SIGINT, signal.SIG_DFL)  # a job in the background inherits it ignored
process = subprocess.Popen(sys.argv[2:], stdin=source.stdout, stderr=follower)
os.close(follower)
shown = b""
while True:
    try:
        chunk = os.read(leader, 4096)
    except OSError:
        break
    if not chunk:
        break
    shown += chunk
    if interrupt and b"fps" in shown:
        process.send_signal(signal.SIGINT)
        interrupt = False
status = process.wait()
source.kill()
lines = [line for line in re.split(rb"\r\n|\r|\x1b\[K", shown) if line]
if not lines:
    sys.exit("shown nothing")
assert any(b" fps" in line for line in lines), shown
assert max(map(len, lines)) < 30, lines
assert shown.endswith(b"\r\n"), shown
assert status == (-signal.SIGINT if sys.argv[1] == "interrupt" else 0), status
print(lines[0].decode())
PYTHON
    python3 terminal.py interrupt "$korframe" convert - /dev/null --matrix 601 --from i420 --to bgra --size 1280x720 >line.txt 2>&1 || fail "Ctrl-C: $(cat line.txt)"
    python3 terminal.py finish "$korframe" convert - /dev/null --matrix 601 --from i420 --to bgra --size 1280x720 >line.txt 2>&1 || fail "progress: $(cat line.txt)"
    grep -qE '^[0-9]+ frames [0-9.]+ fps$' line.txt || fail "progress: $(cat line.txt)"
    # Of how many, and the time left, if the input has a size.
    python3 terminal.py interrupt "$korframe" convert long.i420 /dev/null --matrix 601 --jobs 1 --to bgra --size 1280x720 >line.txt 2>&1 || fail "progress of a file: $(cat line.txt)"
    grep -qE '^[0-9]+/20000 [0-9]+ fps [0-9:]+ left$' line.txt || fail "progress of a file: $(cat line.txt)"
    # What has no room is left out.
    truncate -s 600000000 many.i420
    python3 terminal.py interrupt "$korframe" convert many.i420 /dev/null --to nv12 --size 2x2 >line.txt 2>&1 || fail "progress of many frames: $(cat line.txt)"
    grep -qE '^[0-9]+/100000000 [0-9]+ fps$' line.txt || fail "progress of many frames: $(cat line.txt)"
    python3 terminal.py finish "$korframe" convert - /dev/null --quiet --from i420 --to bgra --size 1280x720 >line.txt 2>&1
    grep -qF "shown nothing" line.txt || fail "--quiet shows progress"
else
    skips "progress on a terminal: python3 is not installed or gets none"
fi

# ---- Comparing ----

works convert numbers.i420 noise.i420 --size 20x20 --dither 0 --seed 1
"$korframe" compare numbers.i420 noise.i420 --size 20x20 --min-psnr 30 >stdout.txt || fail "--min-psnr 30: $(cat stdout.txt)"
grep -q '^PSNR' stdout.txt || fail "--min-psnr prints no PSNR: $(cat stdout.txt)"
"$korframe" compare numbers.i420 noise.i420 --size 20x20 --min-psnr 90 >stdout.txt
[ $? -eq 1 ] || fail "--min-psnr 90: $(cat stdout.txt)"
head -c 6000 noise.i420 >short.i420
"$korframe" compare numbers.i420 short.i420 --size 20x20 --min-psnr 30 >stdout.txt
[ $? -eq 1 ] || fail "--min-psnr of a shorter file: $(cat stdout.txt)"
works compare clip.i420 clip.i420 --size 4x2 --min-psnr 100
# One plane that falls short is enough.
{ head -c 8 clip.i420; bytes "38"; tail -c +10 clip.i420; } >colour.i420
"$korframe" compare clip.i420 colour.i420 --size 4x2 --min-psnr 40 >stdout.txt
[ $? -eq 1 ] || fail "--min-psnr of one plane: $(cat stdout.txt)"
grep -q '^PSNR in dB: Y inf U [0-9.]* V inf$' stdout.txt || fail "--min-psnr of one plane: $(cat stdout.txt)"
refuses 2 "--min-psnr: expected decibels from 0 to 200, for example 40, not 'x'" compare clip.i420 clip.i420 --size 4x2 --min-psnr x

finish
