#!/usr/bin/python3
"""A private desktop with what programs on GNUstep expect there, for running the AppKit side.

    gnustep_desktop.py GNUSTEP COMMAND [ARGUMENT...]

GNUstep takes the user's home folder from the password file; here its settings, its pasteboard's
server and its notification centre belong to the desktop and end with it.
"""

import os
import pathlib
import re
import subprocess
import sys

from virtual_desktop import STARTUP_SECONDS, VirtualDesktop, until


class GNUstepDesktop(VirtualDesktop):
    def __init__(self, gnustep):
        super().__init__(tray=None, notices=None, bus=False)
        self.gnustep = pathlib.Path(gnustep)

    def _start(self):
        super()._start()
        configuration = (self.gnustep / "etc/GNUstep/GNUstep.conf").read_text()
        own = self.folder / "GNUstep.conf"
        # Relative folders are those in the user's home. Of the resources' keys GNUstep says at each
        # start that it does not know them.
        configuration = re.sub(r"^\w+_RESOURCES=.*\n?", "", configuration, flags=re.MULTILINE)
        own.write_text(re.sub(r"^(GNUSTEP_USER_D\w+)=(?!/)(.*)$", rf"\1={self.home}/\2",
                              configuration, flags=re.MULTILINE))
        own.chmod(0o600)
        self.env |= {
            "GNUSTEP_CONFIG_FILE": str(own),
            "PATH": f"{self.gnustep}/bin:{self.env['PATH']}",
            # Colours, fonts and all the rest as GNUstep has them by default.
            "GNUSTEP_STRING_ENCODING": "NSUTF8StringEncoding",
        }
        for server in ("gdnc", "gpbs"):
            self.spawn(server, "--no-fork")
        until(self._servers_answer, "GNUstep's servers", STARTUP_SECONDS)
        # A menu bar as on a Mac, and no icon on the desktop.
        self.set_default("NSGlobalDomain", "NSMenuInterfaceStyle", "NSMacintoshInterfaceStyle")
        self.set_default("NSGlobalDomain", "GSSuppressAppIcon", "YES")

    def set_default(self, domain, key, value):
        """As a user does with the system's tool."""
        self.run("defaults", "write", domain, key, value, check=True, timeout=STARTUP_SECONDS)

    def _servers_answer(self):
        ports = self.folder / "tmp"
        return len(list(ports.rglob("NSMessagePort/names/*"))) >= 2


if __name__ == "__main__":
    if len(sys.argv) < 3:
        sys.exit(__doc__.strip())
    with GNUstepDesktop(sys.argv[1]) as desktop:
        kept = {name: os.environ[name] for name in ("MARBELOT_PICTURES",) if name in os.environ}
        sys.exit(subprocess.call(sys.argv[2:], env=desktop.env | kept))
