# Dependencies between the rooms of the tool point one way: commands, pipeline, io, image.
. "$(dirname "$0")/common.sh"
sources=$3/tools/korframe

allowed=none
for room in image io pipeline commands; do
    allowed="$allowed|$room"
    grep -HoE '#include "(image|io|pipeline|commands)/' "$sources/$room"/*.cpp "$sources/$room"/*.h >includes.txt
    [ -s includes.txt ] || fail "$room includes nothing from any room"
    grep -vE "\"($allowed)/" includes.txt >back.txt && fail "$room depends on a room above it: $(cat back.txt)"
done

finish
