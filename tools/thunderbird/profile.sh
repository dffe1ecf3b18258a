# Sourced, from the root of the checkout: a Thunderbird profile with sample mail and the add-on, and the home that it runs in.

addon_id=$(sed -n 's/^set(QUILLMATE_ADDON_ID "\(.*\)")$/\1/p' cmake/QuillmateAddon.cmake)

# make_mbox FILE MESSAGE…: the messages as Thunderbird keeps local mail.
make_mbox() {
    local file=$1 message
    shift
    for message in "$@"; do
        echo "From - Tue Mar  4 09:15:42 2025"
        tr -d '\r' <"$message" | sed 's/^From />From /'
        echo
    done >"$file.new"
    mv "$file.new" "$file"
}

# make_profile PROFILE XPI MESSAGE…: mail and accounts are made once and then the user's; the rest is brought up to date.
make_profile() {
    local profile=$1 xpi=$2 file
    shift 2
    mkdir -p "$profile/extensions" "$profile/Mail/Local Folders"
    for file in prefs.js folderTree.json session.json; do # The account; the folder that is open at first.
        [ -f "$profile/$file" ] || cp "tools/thunderbird/$file" "$profile/$file"
    done
    [ -f "$profile/Mail/Local Folders/Inbox" ] || make_mbox "$profile/Mail/Local Folders/Inbox" "$@"
    cp tools/thunderbird/user.js "$profile/user.js"
    # Not over the old one, which a running Thunderbird may be reading.
    cp "$xpi" "$profile/extensions/new"
    mv "$profile/extensions/new" "$profile/extensions/$addon_id.xpi"
}

# make_home HOME PROGRAM: a home for Thunderbird alone, in which it finds the program. The program itself runs in the
# user's own home: settings, browser and desktop are the user's.
make_home() {
    local home=$1 program=$2 hosts=$1/.mozilla/native-messaging-hosts
    mkdir -p "$hosts"
    cat >"$home/quillmate-extension" <<SCRIPT
#!/bin/sh
HOME=\$QUILLMATE_USER_HOME exec '${program//\'/\'\\\'\'}' "\$@"
SCRIPT
    chmod +x "$home/quillmate-extension"
    local path=$home/quillmate-extension
    path=${path//\\/\\\\}
    cat >"$hosts/quillmate.json" <<MANIFEST
{
  "name": "quillmate",
  "description": "The panel of Quillmate",
  "path": "${path//\"/\\\"}",
  "type": "stdio",
  "allowed_extensions": ["$addon_id"]
}
MANIFEST
}
