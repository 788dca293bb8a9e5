"""The desktop's portal as a template of dbusmock's, with a user who answers the questions about the camera as
the parameter "answers" says, one after the other: by the number of a response (0 yes, 1 cancelled, 2 no), with
"silence", or with "crash", which the portal does not outlive. Without any there is no camera; else those of
PipeWire, which is where XDG_RUNTIME_DIR says.
"""

import os
import socket

import dbus
import dbus.service

BUS_NAME = "org.freedesktop.portal.Desktop"
MAIN_OBJ = "/org/freedesktop/portal/desktop"
MAIN_IFACE = "org.freedesktop.portal.Camera"
REQUEST_IFACE = "org.freedesktop.portal.Request"
SYSTEM_BUS = False


def load(mock, parameters):
    mock.answers = parameters["answers"]
    mock.AddProperty(MAIN_IFACE, "IsCameraPresent", bool(mock.answers))
    mock.log("ready")


@dbus.service.method(MAIN_IFACE, in_signature="a{sv}", out_signature="o", sender_keyword="sender")
def AccessCamera(self, options, sender):
    request = f"{MAIN_OBJ}/request/{sender[1:].replace('.', '_')}/{options['handle_token']}"
    answer = self.answers.pop(0)
    if answer == "crash":
        os._exit(1)
    if answer != "silence":
        # Before the call has returned, as some portals do.
        self.EmitSignalDetailed(REQUEST_IFACE, "Response", "ua{sv}", [dbus.UInt32(answer), {}],
                                {"path": request, "destination": sender})
    return dbus.ObjectPath(request)


@dbus.service.method(MAIN_IFACE, in_signature="a{sv}", out_signature="h")
def OpenPipeWireRemote(self, options):
    remote = socket.socket(socket.AF_UNIX)
    remote.connect(os.environ["XDG_RUNTIME_DIR"] + "/pipewire-0")
    return dbus.types.UnixFd(remote)
