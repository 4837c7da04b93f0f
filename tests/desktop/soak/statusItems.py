"""The place where a desktop's panel would show status items: it takes them in, reads them and presses their entries."""

import threading

from gi.repository import Gio, GLib

WATCHER = "org.kde.StatusNotifierWatcher"
DESCRIPTION = """
<node>
  <interface name="org.kde.StatusNotifierWatcher">
    <method name="RegisterStatusNotifierItem"><arg type="s" direction="in"/></method>
    <method name="RegisterStatusNotifierHost"><arg type="s" direction="in"/></method>
    <property name="RegisteredStatusNotifierItems" type="as" access="read"/>
    <property name="IsStatusNotifierHostRegistered" type="b" access="read"/>
    <property name="ProtocolVersion" type="i" access="read"/>
    <signal name="StatusNotifierItemRegistered"><arg type="s"/></signal>
    <signal name="StatusNotifierHostRegistered"/>
  </interface>
</node>"""
MILLISECONDS_TO_ANSWER = 10_000


class StatusItems:
    """Takes the watcher's name on the session bus of this address; answers from a thread of its own."""

    def __init__(self, address):
        self._services = []
        self._context = GLib.MainContext()
        self._loop = GLib.MainLoop(self._context)
        self._ready = threading.Event()
        self._thread = threading.Thread(target=self._serve, args=[address], daemon=True)
        self._thread.start()
        if not self._ready.wait(30):
            raise RuntimeError("no place for status items")

    def close(self):
        self._loop.quit()
        self._thread.join()

    def title(self, process_id):
        """What the program's item says, such as "QV 24:59"; None while it has none."""
        if not (service := self._service_of(process_id)):
            return None
        answer = self._call(service, "/StatusNotifierItem", "org.freedesktop.DBus.Properties", "Get",
                            GLib.Variant("(ss)", ("org.kde.StatusNotifierItem", "ToolTip")))
        return answer.unpack()[0][2]

    def press(self, process_id, label):
        """Presses the entry of the item's menu that is called so."""
        service = self._service_of(process_id)
        _, (_, _, entries) = self._call(service, "/MenuBar", "com.canonical.dbusmenu", "GetLayout",
                                        GLib.Variant("(iias)", (0, -1, []))).unpack()
        [number] = [number for number, properties, _ in entries if properties.get("label", "").replace("_", "") == label]
        self._call(service, "/MenuBar", "com.canonical.dbusmenu", "Event",
                   GLib.Variant("(isvu)", (number, "clicked", GLib.Variant("s", ""), 0)))

    def _service_of(self, process_id):
        for service in reversed(self._services):
            answer = self._call("org.freedesktop.DBus", "/", "org.freedesktop.DBus", "GetConnectionUnixProcessID",
                                GLib.Variant("(s)", (service,)))
            if answer.unpack()[0] == process_id:
                return service
        return None

    def _call(self, service, path, interface, method, arguments):
        return self._bus.call_sync(service, path, interface, method, arguments, None, Gio.DBusCallFlags.NO_AUTO_START,
                                   MILLISECONDS_TO_ANSWER, None)

    def _serve(self, address):
        self._context.push_thread_default()
        flags = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
        self._bus = Gio.DBusConnection.new_for_address_sync(address, flags, None, None)
        interface = Gio.DBusNodeInfo.new_for_xml(DESCRIPTION).interfaces[0]
        self._bus.register_object("/StatusNotifierWatcher", interface, self._called, self._asked, None)
        self._call("org.freedesktop.DBus", "/", "org.freedesktop.DBus", "RequestName", GLib.Variant("(su)", (WATCHER, 0)))
        self._ready.set()
        self._loop.run()

    def _called(self, bus, sender, path, interface, method, arguments, invocation):
        if method == "RegisterStatusNotifierItem":
            service = arguments.unpack()[0]
            self._services.append(sender if service.startswith("/") else service)
            bus.emit_signal(None, path, interface, "StatusNotifierItemRegistered", GLib.Variant("(s)", (service,)))
        invocation.return_value(None)

    def _asked(self, bus, sender, path, interface, name):
        return {
            "RegisteredStatusNotifierItems": GLib.Variant("as", self._services),
            "IsStatusNotifierHostRegistered": GLib.Variant("b", True),
            "ProtocolVersion": GLib.Variant("i", 0),
        }[name]
