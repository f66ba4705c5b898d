# Pipes from and to other programs. Those that are not installed are skipped, and the test says why.
. "$(dirname "$0")/common.sh"
ran=0

ff() {
    ffmpeg -nostdin -y -v error "$@"
}

header_has() {
    head -1 "$1" | grep -qE "$2" || fail "$1 begins with '$(head -1 "$1")', which has no '$2'"
}

if command -v ffmpeg >/dev/null; then
    ran=$((ran + 1))
    # pixels FFMPEG'S-NAME FIELDS-IN FIELDS-OUT: from ffmpeg through korframe and back without a change.
    pixels() {
        ff -f lavfi -i "testsrc=size=64x48:rate=30000/1001:duration=0.2" -vf setsar=4/3 -pix_fmt "$1" -strict -1 \
            -f yuv4mpegpipe - >in.y4m
        header_has in.y4m "$2"
        "$korframe" convert - - <in.y4m >out.y4m 2>stderr.txt || fail "$1: $(cat stderr.txt)"
        [ ! -s stderr.txt ] || fail "$1 printed: $(cat stderr.txt)"
        header_has out.y4m "^YUV4MPEG2 W64 H48 F30000:1001 Ip A4:3 $3"
        ff -f lavfi -i "testsrc=size=64x48:rate=30000/1001:duration=0.2" -vf setsar=4/3 -pix_fmt "$1" -strict -1 \
            -f yuv4mpegpipe - | "$korframe" convert - - --mirror --jobs 2 | ff -i - -f rawvideo back.raw || fail "$1: ffmpeg refuses what korframe wrote"
        works convert out.y4m mirrored.y4m --mirror
        ff -i mirrored.y4m -f rawvideo straight.raw
        same back.raw straight.raw
    }
    pixels yuv420p " C420jpeg .*XCOLORRANGE=LIMITED" "C420jpeg .*XCOLORRANGE=LIMITED$"
    works compare in.y4m out.y4m
    pixels yuvj420p "XCOLORRANGE=FULL" "C420jpeg .*XCOLORRANGE=FULL$"
    works compare in.y4m out.y4m
    pixels yuv422p " C422 " "C422 .*XCOLORRANGE=LIMITED$"
    pixels yuv444p " C444 " "C444 .*XCOLORRANGE=LIMITED$"
    works compare in.y4m out.y4m
    # 4:2:2 planar and packed by ffmpeg gives the same planes here.
    ff -f lavfi -i "testsrc=size=64x48:duration=0.2" -pix_fmt yuv422p -f yuv4mpegpipe planar.y4m
    ff -i planar.y4m -pix_fmt yuyv422 -f rawvideo packed.yuy2
    ff -i planar.y4m -f rawvideo planar.i422
    works convert planar.y4m a.i420
    works convert packed.yuy2 b.i420 --size 64x48
    works convert planar.i422 c.i420 --size 64x48
    same a.i420 b.i420
    same a.i420 c.i420
    # An interlaced clip keeps its field order.
    ff -f lavfi -i "testsrc=size=64x48:duration=0.2" -vf setfield=tff -pix_fmt yuv420p -field_order tt -f yuv4mpegpipe - |
        "$korframe" convert - interlaced.y4m || fail "an interlaced clip"
    header_has interlaced.y4m " It "
else
    skips "ffmpeg is not installed"
fi

if command -v gst-launch-1.0 >/dev/null && gst-inspect-1.0 y4menc >/dev/null 2>&1; then
    ran=$((ran + 1))
    caps="video/x-raw,width=64,height=48,framerate=30000/1001"
    gst-launch-1.0 -q videotestsrc num-buffers=4 ! "$caps,format=I420" ! y4menc ! fdsink | "$korframe" convert - out.y4m || fail "from GStreamer"
    header_has out.y4m "^YUV4MPEG2 W64 H48 F30000:1001 Ip A1:1 C420"
    [ "$(grep -ac FRAME out.y4m)" -eq 4 ] || fail "from GStreamer: $(grep -ac FRAME out.y4m) frames"
    works convert out.y4m out.i420
    for way in raw y4m; do
        case $way in
            raw) source="rawvideoparse format=i420 width=64 height=48 framerate=30000/1001" ;;
            y4m) source=y4mdec ;;
        esac
        if ! gst-inspect-1.0 "${source%% *}" >/dev/null 2>&1; then
            skips "GStreamer has no ${source%% *}"
            continue
        fi
        to=$way
        [ $way = y4m ] || to=i420
        # shellcheck disable=SC2086
        "$korframe" convert out.y4m - --to $to | gst-launch-1.0 -q fdsrc ! $source ! filesink location=back.i420 || fail "to GStreamer as $way"
        same back.i420 out.i420
    done
else
    skips "GStreamer with y4menc is not installed"
fi

[ $ran -gt 0 ] || exit 77
finish
