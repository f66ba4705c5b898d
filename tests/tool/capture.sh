# From RGB in every byte order, by each matrix, to planes of 4:2:0 and 4:4:4.
. "$(dirname "$0")/common.sh"
mkdir pictures
"$fixtures" pictures || exit 1

# Yellow, 2x2.
bytes "00 ff ff 01 00 ff ff 02 00 ff ff 03 00 ff ff 04" >yellow.bgra
bytes "ff ff 00 01 ff ff 00 02 ff ff 00 03 ff ff 00 04" >yellow.rgba
bytes "01 ff ff 00 02 ff ff 00 03 ff ff 00 04 ff ff 00" >yellow.argb
bytes "01 00 ff ff 02 00 ff ff 03 00 ff ff 04 00 ff ff" >yellow.abgr
bytes "ff ff 00 ff ff 00 ff ff 00 ff ff 00" >yellow.rgb24
bytes "00 ff ff 00 ff ff 00 ff ff 00 ff ff" >yellow.bgr24
printf '47 157 16\n-26 -87 112\n112 -102 -10\n' >709.txt
for order in bgra rgba argb abgr rgb24 bgr24; do
    works convert yellow.$order out.i420 --size 2x2
    # The 24-bit converters round luma more finely.
    case $order in
        *24) holds out.i420 "d2 d2 d2 d2 10 91" ;;
        *) holds out.i420 "d1 d1 d1 d1 10 91" ;;
    esac
    for matrix in 709 709.txt; do
        works convert yellow.$order out.i420 --size 2x2 --matrix $matrix
        holds out.i420 "db db db db 0f 89"
    done
    works convert yellow.$order out.i444 --size 2x2
    holds out.i444 "d1 d1 d1 d1 10 10 10 10 91 91 91 91"
    works convert yellow.$order out.i444 --size 2x2 --matrix 709
    holds out.i444 "db db db db 0f 0f 0f 0f 89 89 89 89"
done

# Odd sizes: every pixel by the same matrix, and nothing from outside the picture.
for order in rgb24 bgra; do
    { printf 'P6 3 3 255\n'; for _ in 1 2 3 4 5 6 7 8 9; do bytes "ff ff 00"; done; } >yellow.ppm
    works convert yellow.ppm out.i420 --order $order --matrix 709.txt
    holds out.i420 "db db db db db db db db db 0f 0f 0f 0f 89 89 89 89"
done
works convert yellow.ppm out.i420 --order rgb24
holds out.i420 "d2 d2 d2 d2 d2 d2 d2 d2 d2 10 10 10 10 91 91 91 91"
# Red over yellow, bottom row first, in one column, so that the pair forms the block.
{ printf 'P6 1 3 255\n'; bytes "ff 00 00 ff ff 00 ff ff 00"; } >column.ppm
for path in "bgra 601 d1 d1 51" "rgba 601 d1 d1 51" "bgr24 601 d2 d2 51" "bgra 709 db db 3e" "bgra 709.txt db db 3e"; do
    # shellcheck disable=SC2086
    set -- $path
    works convert column.ppm out.i420 --order "$1" --matrix "$2" --flip
    [ "$(hex out.i420 | cut -c 1-8)" = "$3 $4 $5" ] || fail "$path: $(hex out.i420)"
done
works convert column.ppm out.i444 --matrix 709 --flip
holds out.i444 "db db 3e 0f 0f 66 89 89 ef"

# Both kinds of Y4M, and pictures to pictures.
works convert yellow.ppm out.y4m --to i444
[ "$(head -1 out.y4m)" = "YUV4MPEG2 W3 H3 F25:1 Ip A1:1 C444 XCOLORRANGE=LIMITED XKORMATRIX=601" ] || fail "i444: $(head -1 out.y4m)"
"$korframe" convert yellow.ppm - --to y4m:i444 >piped.y4m || fail "y4m:i444"
same out.y4m piped.y4m
works convert yellow.ppm out.y4m --matrix 709.txt
[ "$(head -1 out.y4m)" = "YUV4MPEG2 W3 H3 F25:1 Ip A1:1 C420jpeg XCOLORRANGE=LIMITED" ] || fail "a matrix from a file: $(head -1 out.y4m)"
works convert yellow.ppm out.png --render bgra --matrix 709
works convert pictures/alpha.png out.rgba
works convert yellow.rgba clip.png --size 2x2

refuses 2 "--matrix 709.txt: a matrix file captures to i420 only; for i444 use 601 or 709" convert yellow.ppm none.i444 --matrix 709.txt
absent none.i444

finish
