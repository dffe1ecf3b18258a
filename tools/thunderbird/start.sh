# Sourced by run, from the root of the checkout: Thunderbird on a profile of its own, with sample mail and the add-on.
. tools/thunderbird/profile.sh

start_thunderbird() {
    local folder=$PWD/build/thunderbird name status=0
    [ -n "${DISPLAY-}${WAYLAND_DISPLAY-}" ] ||
        fail "there is no display to show Thunderbird on: start this from a desktop, or set DISPLAY (an Xvfb does, too)"
    (umask 077 && mkdir -p "$folder")
    say "preparing the profile in build/thunderbird"
    make_profile "$folder/profile" build/release/quillmate.xpi samples/*.eml
    make_home "$folder/home" "$PWD/build/release/bin/quillmate-extension"
    export QUILLMATE_USER_HOME=$HOME
    # The display may be opened by a key in the user's own home.
    [ -n "${XAUTHORITY-}" ] || [ ! -f "$HOME/.Xauthority" ] || export XAUTHORITY=$HOME/.Xauthority
    thunderbird=
    trap 'kill ${thunderbird:+"$thunderbird"} 2>/dev/null || true; wait' EXIT
    for name in INT:130 TERM:143 HUP:129; do
        trap "say 'ended; what was not saved in Thunderbird is gone'; exit ${name#*:}" "${name%:*}"
    done
    say "starting Thunderbird: press Reply on a message, and the panel appears beside it; close Thunderbird to end"
    HOME="$folder/home" thunderbird --no-remote --profile "$folder/profile" "$@" &
    thunderbird=$!
    wait "$thunderbird" || status=$?
    thunderbird=
    [ "$status" -eq 0 ] || fail "Thunderbird ended with status $status; what it said is above"
}
