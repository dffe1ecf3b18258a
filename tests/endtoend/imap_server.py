"""dovecot on the loopback interface, with one mailbox that any password opens."""

import os
import pwd
import shutil
import signal
import socket
import subprocess
import tempfile
import time

from local_service import PATIENCE

CONFIGURATION = """
protocols = imap
listen = 127.0.0.1
base_dir = {folder}/run
state_dir = {folder}/run
log_path = {folder}/log
ssl = no
disable_plaintext_auth = no
default_internal_user = {internal}
default_internal_group = {group}
default_login_user = {login}
first_valid_uid = 1
first_valid_gid = 1
mail_location = maildir:{folder}/mail
passdb {{
  driver = static
  args = nopassword=y
}}
userdb {{
  driver = static
  args = uid={uid} gid={gid} home={folder}
}}
service imap-login {{
  chroot =
  inet_listener imap {{
    port = {port}
  }}
  inet_listener imaps {{
    port = 0
  }}
}}
service anvil {{
  chroot =
}}
service stats {{
  chroot =
}}
"""


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


class ImapServer:
    """Its inbox holds the messages, in their order."""

    def __init__(self, messages):
        self.folder = tempfile.mkdtemp(prefix="imap")
        self.port = free_port()
        os.chmod(self.folder, 0o755)
        # dovecot refuses to read mail as root: there it does so as the user "nobody".
        root = os.getuid() == 0
        owner = pwd.getpwnam("nobody") if root else pwd.getpwuid(os.getuid())
        me = owner.pw_name
        group = "dovecot" if root else subprocess.check_output(["id", "-gn"], text=True).strip()
        for name in ("cur", "new", "tmp"):
            os.makedirs(f"{self.folder}/mail/{name}")
        for number, message in enumerate(messages):
            with open(f"{self.folder}/mail/cur/{number:03}.made.here:2,S", "wb") as file:
                file.write(message)
        if root:
            subprocess.run(["chown", "-R", f"{owner.pw_uid}:{owner.pw_gid}", self.folder + "/mail"], check=True)
        with open(self.folder + "/dovecot.conf", "w") as file:
            file.write(
                CONFIGURATION.format(
                    folder=self.folder,
                    port=self.port,
                    internal="dovecot" if root else me,
                    login="dovenull" if root else me,
                    group=group,
                    uid=owner.pw_uid,
                    gid=owner.pw_gid,
                )
            )
        self.process = None
        self.start()

    def start(self):
        command = ["/usr/sbin/dovecot", "-F", "-c", self.folder + "/dovecot.conf"]
        self.process = subprocess.Popen(command, start_new_session=True)
        end = time.monotonic() + PATIENCE
        while True:
            try:
                socket.create_connection(("127.0.0.1", self.port), timeout=5).close()
                return
            except OSError:
                if time.monotonic() > end or self.process.poll() is not None:
                    raise AssertionError("dovecot does not start:\n" + self.log()) from None
                time.sleep(0.05)

    def log(self):
        path = self.folder + "/log"
        return open(path, errors="replace").read() if os.path.exists(path) else ""

    def stop(self):
        """The server is away; its mail is there when it starts again."""
        if self.process:
            self.process.terminate()
            self.process.wait(PATIENCE)
            try:
                os.killpg(self.process.pid, signal.SIGKILL)  # Connections that are open go on without it.
            except ProcessLookupError:
                pass
            self.process = None

    def end(self):
        self.stop()
        shutil.rmtree(self.folder)

    def preferences(self):
        """Of an account there, the profile's second."""
        server = "mail.server.server2."
        values = {
            "mail.accountmanager.accounts": "account1,account2",
            "mail.account.account2.server": "server2",
            "mail.account.account2.identities": "id1",
            server + "type": "imap",
            server + "name": "Office",
            server + "hostname": "127.0.0.1",
            server + "port": self.port,
            server + "userName": "maria",
            server + "authMethod": 3,
            server + "socketType": 0,
            server + "login_at_startup": False,
            server + "check_new_mail": False,
            server + "offline_download": False,
            server + "autosync_offline_stores": False,
        }
        return values
