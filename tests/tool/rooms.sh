# Dependencies between the rooms of the tool point one way: commands, pipeline, io, image. Of the library they use the
# dispatched functions.
. "$(dirname "$0")/common.sh"
sources=$3/tools/korframe

allowed=none
for room in image io pipeline commands; do
    allowed="$allowed|$room"
    grep -HoE '#include "(image|io|pipeline|commands)/' "$sources/$room"/*.cpp "$sources/$room"/*.h >includes.txt
    [ -s includes.txt ] || fail "$room includes nothing from any room"
    grep -vE "\"($allowed)/" includes.txt >back.txt && fail "$room depends on a room above it: $(cat back.txt)"
done

grep -rnE 'Kor[A-Za-z0-9]+_C_\>|Yuv420C\>' "$sources" --include='*.cpp' --include='*.h' --include=CMakeLists.txt >portable.txt && fail "the portable set is used: $(cat portable.txt)"

finish
