# The demo writes a picture of each stage.
. "$(dirname "$0")/common.sh"

"$korframe" demo stages --seed 1 >stdout.txt 2>stderr.txt || fail "the demo exited with $?: $(cat stderr.txt)"
pictures="1-scene 2-camera 3-captured 4-composed 5-rendered 6-noise contact-sheet"
for name in $pictures; do
    works convert stages/$name.png $name.ppm
    grep -qF "stages/$name.png: " stdout.txt || fail "the demo did not name $name.png"
done
[ "$(sed -n 2p 1-scene.ppm)" = "1280 720" ] || fail "the size of the scene"
[ "$(sed -n 2p 2-camera.ppm)" = "720 1280" ] || fail "the camera does not lie on its side"
[ "$(sed -n 2p 5-rendered.ppm)" = "1280 720" ] || fail "the size of the last stage"
[ "$(sed -n 2p contact-sheet.ppm)" = "1280 753" ] || fail "the rows of the contact sheet: $(sed -n 2p contact-sheet.ppm)"
cmp -s 4-composed.ppm 5-rendered.ppm && fail "there is no noise"
leaves_nothing

# What is captured is what was filmed: the third stage is the scene, captured to planes and rendered.
works convert stages/1-scene.png scene.y4m --matrix 601
works convert scene.y4m scene.png
same scene.png stages/3-captured.png

# The same seed gives the same pictures, also in an existing directory.
"$korframe" demo stages2 --seed 1 >/dev/null || fail "the second demo"
for name in $pictures; do
    same stages/$name.png stages2/$name.png
done
"$korframe" demo stages2 --seed 2 >/dev/null || fail "the third demo"
same stages/4-composed.png stages2/4-composed.png
cmp -s stages/5-rendered.png stages2/5-rendered.png && fail "seeds 1 and 2 give the same"

# Other pictures, with odd sides.
works testcard own.ppm --size 161x97
works testcard second.png --size 64x200
"$korframe" demo own own.ppm --overlay second.png >/dev/null || fail "the demo with pictures"
works convert own/1-scene.png own-scene.ppm
[ "$(sed -n 2p own-scene.ppm)" = "160 96" ] || fail "the size of an own scene: $(sed -n 2p own-scene.ppm)"

printf 'P6 8 8 255\n' >small.ppm
repeat 192 80 >>small.ppm
refuses 1 "small.ppm: is 8x8; the demo needs at least 64 pixels on a side" demo none small.ppm
refuses 1 "gone.png: cannot be opened" demo none gone.png
absent none
: >file
refuses 1 "file: is a file; expected a directory" demo file
refuses 1 "no/where: cannot be created: No such file or directory" demo no/where
refuses 2 "DIRECTORY is required" demo

finish
