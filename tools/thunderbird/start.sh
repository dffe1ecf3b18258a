# Sourced by run, from the root of the checkout: Thunderbird on a profile of its own, with sample mail, the add-on and the
# local service.
. tools/thunderbird/profile.sh

# What the build's hosts are.
host_named() {
    sed -n "s/^QUILLMATE_$1_HOST:[A-Z]*=//p" build/release/CMakeCache.txt
}

# start_service DATA: sets service_address; the service ends with this shell. It keeps its standard error.
start_service() {
    coproc SERVICE { exec build/release/bin/quillmate-service --port 0 --data "$1"; }
    service=$SERVICE_PID
    local line
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
    say "starting Thunderbird: open a message and press Reply, and the panel appears beside the reply"
    HOME="$folder/home" thunderbird --no-remote --profile "$folder/profile" "$@" &
    local thunderbird=$! status=0
    # However this ends, nothing of it stays behind.
    trap 'kill "$thunderbird" "$service" 2>/dev/null' INT TERM HUP
    wait "$thunderbird" || status=$?
    kill "$service" "$thunderbird" 2>/dev/null || true # Both may have ended by themselves.
    wait
    [ "$status" -eq 0 ] || fail "Thunderbird ended with status $status; what it said is above"
}
