# The man page and the completions name exactly what the program has.
. "$(dirname "$0")/common.sh"
sources=$3/tools/korframe

# The text of the man page without markup.
sed 's/\\-/-/g; s/\\f[BIRP]//g; s/"//g' "$sources/man/korframe.1" >page.txt

subcommands=$("$korframe" --help | awk 'list && NF > 1 { print $1 } /^Subcommands:/ { list = 1 }')
[ "$(echo "$subcommands" | wc -l)" -ge 7 ] || fail "--help lists only: $subcommands"
options_of() {
    # shellcheck disable=SC2086
    "$korframe" $1 --help | grep -oE '^ +(-[a-z],)?--[a-z0-9-]+' | grep -oE -- '--.*'
}
# The section of a subcommand, from its heading to the next.
section() {
    awk -v heading=".SS $1" '$0 == heading { on = 1; next } /^\.S[SH]/ { on = 0 } on' page.txt
}

for option in $(options_of ""); do
    grep -qE -- "$option( |\$)" page.txt || fail "the man page does not name $option"
done
for subcommand in $subcommands; do
    section "$subcommand" >section.txt
    [ -s section.txt ] || fail "the man page has no section on $subcommand"
    options_of "$subcommand" >options.txt
    for option in $(cat options.txt); do
        [ "$option" = --help ] || grep -qE -- "(^|[ |[])$option(\$|[] |])" section.txt || fail "the man page does not name $option of $subcommand"
    done
    # And the other way round.
    for option in $(section "$subcommand" | sed "s/convert --blend//" | grep -oE -- '--[a-z][a-z0-9-]*' | sort -u); do
        grep -qFx -- "$option" options.txt || fail "the man page names $option of $subcommand, which does not exist"
    done
done

# What users should know before they wonder, without regard to fonts and lines.
sed 's/^\.\(BR\|RB\|IR\|RI\|BI\|IB\) \(.*\)/\2/; s/^\.[BI] //; s/ \([,.]\)/\1/g' page.txt | tr '\n' ' ' >text.txt
for sentence in \
    "White comes back from YUV as 254, not 255. Rendering scales luma of 16 to 235 by 149/128 in whole numbers and rounds down" \
    "There is no scaling, no filtering, no compressed video and no sample deeper than 8 bits" \
    "gamma (gAMA) and colour profiles are ignored, with a warning" \
    "Chroma siting is kept as it is and never changed" \
    "Rendering repeats each chroma sample for the pixels that it covers, whatever the siting." \
    "a table brings it to limited range, which costs at most" \
    "A range that is not given is taken as limited; when that matters, a note says so." \
    "Otherwise transparent pixels are composited over black, with a warning" \
    "HD video is usually BT.709, so a note is printed" \
    "The output stays as it was, and the frames before the break lie beside it as" \
    ".korframe-XXXXXX.tmp An output that is not complete yet" \
    "is removed by the next run that writes to the directory, unless a living process holds a lock" \
    "The frames before the break of an input. Such files are never replaced or removed."; do
    grep -qF -- "$sentence" text.txt || fail "the man page does not say '$sentence'"
done

# Each subcommand takes one line.
"$korframe" --help | awk 'list && NF > 0 && !/^  [a-z]/ { bad = 1 } /^Subcommands:/ { list = 1 } END { exit bad }' || fail "a subcommand takes more than one line in --help"

if command -v mandoc >/dev/null; then
    mandoc -T lint "$sources/man/korframe.1" >mandoc.txt 2>&1
    [ ! -s mandoc.txt ] || fail "mandoc says: $(cat mandoc.txt)"
else
    skips "mandoc is not installed"
fi
if command -v groff >/dev/null; then
    groff -man -ww -z "$sources/man/korframe.1" >groff.txt 2>&1
    [ ! -s groff.txt ] || fail "groff says: $(cat groff.txt)"
fi

# Completion for bash: offer WORDS... prints the completions of the last one. Needs bash, and korframe in PATH.
mkdir bin
ln -s "$korframe" bin/korframe
PATH=$PWD/bin:$PATH
if command -v bash >/dev/null; then
    offer() {
        # shellcheck disable=SC2016
        bash -c '. "$0"; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1))
            _korframe "$1" "${COMP_WORDS[COMP_CWORD]}" "${COMP_WORDS[COMP_CWORD - 1]}"
            [ ${#COMPREPLY[@]} -eq 0 ] || printf "%s\n" "${COMPREPLY[@]}"' "$sources/completion/korframe.bash" "$@" | tr '\n' ' '
    }
    completes() {
        wanted=$1
        shift
        given=$(offer "$@")
        [ "$given" = "$wanted" ] || fail "completion of '$*' gives '$given', expected '$wanted'"
    }
    completes "$(echo "$subcommands" | tr '\n' ' ')" korframe ""
    completes "convert compare " korframe co
    completes "--help --version " korframe -
    completes "$(options_of convert | tr '\n' ' ')" korframe convert --
    completes "--overlay-from --overlay-size " korframe blend a.png --ov
    completes "0 90 180 270 " korframe convert --rotate ""
    completes "rgba rgb24 " korframe convert --flip --to r
    completes "uyvy " korframe info --from u
    completes "" korframe convert some
fi
if command -v zsh >/dev/null; then
    zsh -n "$sources/completion/_korframe" || fail "the completion of zsh"
fi

finish
