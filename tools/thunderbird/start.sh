# Sourced by run, from the root of the checkout: Thunderbird on a profile of its own, with sample mail, the add-on and the
# local service.
. tools/thunderbird/profile.sh

# What the build's hosts are.
host_named() {
    sed -n "s/^QUILLMATE_$1_HOST:[A-Z]*=//p" build/release/CMakeCache.txt
}

# start_service DATA: sets service_address; the service ends with this shell, however that ends.
start_service() {
    coproc SERVICE { exec build/release/bin/quillmate-service --port 0 --data "$1"; }
    service=$SERVICE_PID thunderbird=
    trap 'kill "$service" ${thunderbird:+"$thunderbird"} 2>/dev/null || true; wait' EXIT
    local line name
    for name in INT:130 TERM:143 HUP:129; do
        trap "say 'ended; what was not saved in Thunderbird is gone'; exit ${name#*:}" "${name%:*}"
    done
    read -r -t 60 line <&"${SERVICE[0]}" || fail "the assistant service on this machine did not start"
    service_address=${line#quillmate-service listening on https://}
}

start_thunderbird() {
    local folder=$PWD/build/thunderbird
    [ -n "${DISPLAY-}${WAYLAND_DISPLAY-}" ] ||
        fail "there is no display to show Thunderbird on: start this from a desktop, or set DISPLAY (an Xvfb does, too)"
    (umask 077 && mkdir -p "$folder")
    say "preparing the profile in build/thunderbird"
    make_profile "$folder/profile" build/release/quillmate.xpi samples/*.eml
    make_home "$folder/home" "$PWD/build/release/bin/quillmate-extension"
    say "starting the assistant service"
    start_service "$folder/service"
    local host routes=
    for host in "$(host_named LIVE)" "$(host_named STAGING)" "$(host_named DEV)"; do
        routes+="${routes:+,}$host=$service_address"
    done
    export QUILLMATE_CONNECT_TO=$routes QUILLMATE_CA_FILE="$folder/service/ca.pem" QUILLMATE_USER_HOME=$HOME
    # The display may be opened by a key in the user's own home.
    [ -n "${XAUTHORITY-}" ] || [ ! -f "$HOME/.Xauthority" ] || export XAUTHORITY=$HOME/.Xauthority
    say "starting Thunderbird: press Reply on a message, and the panel appears beside it; close Thunderbird to end"
    HOME="$folder/home" thunderbird --no-remote --profile "$folder/profile" "$@" &
    thunderbird=$!
    local status=0
    wait "$thunderbird" || status=$?
    thunderbird=
    [ "$status" -eq 0 ] || fail "Thunderbird ended with status $status; what it said is above"
}
