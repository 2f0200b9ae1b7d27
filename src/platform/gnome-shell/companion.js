// Corvane's companion in GNOME Shell: what only the Shell can give Corvane on a Wayland session,
// given to Corvane alone, while it runs and has asked for it.
//
//   - Key transitions: a modifier key pressed or released (its keysym, which names only the
//     modifier, and when), and a bare mark that another key was pressed, with no name or code,
//     so that Corvane tells a hold from a chord such as Ctrl+Z. No other key's identity leaves the
//     Shell; the companion never learns one itself.
//   - The focused window's process id and application id, on every change.
//   - Corvane's windows centred on the monitor of the window in front the moment they map, and
//     the panel kept above, and shown without the Shell's zoom.
//   - An icon in the top bar where the session has no tray, whose menu is Corvane's own tray
//     menu, read from Corvane and acted on through it.
//
// Everything goes as unicast signals to the unique name that owns "com.vantorel.Corvane" and
// has subscribed; nothing is broadcast. Until Corvane subscribes the companion only watches for
// that name: no signal handler, no timer.
//
// Keys: the Shell hands a key meant for an application's window to it before any extension's
// event filter runs, so no filter sees it. What the Shell does tell is that input happened (its
// idle monitor), and what it keeps is the seat's modifier state. As each input arrives the
// companion compares the seat with the last: a change of the modifier state is a modifier's
// press or release; input that changed neither it, nor a lock, nor the pointer, while a modifier
// is held, is another key (or a scroll, which breaks a hold as well). No timer of its own runs; a
// quiet session costs the Shell nothing, and typing costs it a call into this file and a look at
// the seat per input, the call being most of it.
// While one of Corvane's own windows has the focus its keys go to Corvane itself, and only
// modifiers are told.
//
// This file is the logic only; the build wraps it for the Shell's two extension formats (imports
// up to 44, ES modules from 45), which provide Clutter, Gio, GLib, Shell, St, Main, PanelMenu and
// PopupMenu.

const CORVANE_NAME = 'com.vantorel.Corvane';
const COMPANION_PATH = '/com/vantorel/Corvane/Companion';
const COMPANION_INTERFACE = 'com.vantorel.Corvane.Companion1';
const MENU_PATH = '/com/vantorel/Corvane/StatusMenu';
const MENU_INTERFACE = 'com.vantorel.Corvane.StatusMenu';
const PANEL_TITLE = 'Corvane';

const COMPANION_XML = `<node>
  <interface name="${COMPANION_INTERFACE}">
    <method name="Subscribe">
      <arg type="a{sv}" name="wanted" direction="in"/>
      <arg type="s" name="version" direction="out"/>
    </method>
    <method name="Unsubscribe"/>
    <method name="ShowTopBarIcon">
      <arg type="b" name="shown" direction="in"/>
    </method>
    <signal name="Available"/>
    <signal name="Gone"/>
    <signal name="ModifierKey">
      <arg type="u" name="keysym"/>
      <arg type="b" name="pressed"/>
      <arg type="x" name="monotonicMicroseconds"/>
    </signal>
    <signal name="KeyPressed"/>
    <signal name="FocusChanged">
      <arg type="u" name="pid"/>
      <arg type="s" name="appId"/>
    </signal>
  </interface>
</node>`;

// The modifiers Corvane's trigger can be: their state bit and the keysym that names them.
const MODIFIERS = [
    [Clutter.ModifierType.CONTROL_MASK, Clutter.KEY_Control_L],
    [Clutter.ModifierType.MOD1_MASK, Clutter.KEY_Alt_L],
    [Clutter.ModifierType.MOD4_MASK, Clutter.KEY_Super_L],
    [Clutter.ModifierType.SHIFT_MASK, Clutter.KEY_Shift_L],
];
const HELD = MODIFIERS.reduce((mask, [bit]) => mask | bit, 0);
// Buttons (the pointer's), locks and AltGr: a change of these is no other key.
const NOT_KEYS = Clutter.ModifierType.BUTTON1_MASK | Clutter.ModifierType.BUTTON2_MASK |
    Clutter.ModifierType.BUTTON3_MASK | Clutter.ModifierType.LOCK_MASK |
    Clutter.ModifierType.MOD2_MASK | Clutter.ModifierType.MOD5_MASK;

class CorvaneCompanion {
    constructor(version, folder) {
        this._version = version;
        this._folder = folder;
    }

    enable() {
        this._exported = Gio.DBusExportedObject.wrapJSObject(COMPANION_XML, this);
        this._exported.export(Gio.DBus.session, COMPANION_PATH);
        this._corvane = null; // the unique name owning CORVANE_NAME
        this._nameWatch = Gio.bus_watch_name(Gio.BusType.SESSION, CORVANE_NAME,
            Gio.BusNameWatcherFlags.NONE,
            (connection, name, owner) => {
                this._corvane = owner;
                this._emit(owner, 'Available', null);
            },
            () => {
                this._unsubscribe();
                this._corvane = null;
            });
    }

    disable() {
        if (this._subscriber)
            this._emit(this._subscriber, 'Gone', null);
        this._unsubscribe();
        Gio.bus_unwatch_name(this._nameWatch);
        this._exported.unexport();
        this._exported = null;
    }

    SubscribeAsync([wanted], invocation) {
        const sender = invocation.get_sender();
        if (sender && sender === this._subscriber) {
            invocation.return_value(new GLib.Variant('(s)', [this._version]));
            return;
        }
        if (!sender || sender !== this._corvane) {
            invocation.return_dbus_error(`${COMPANION_INTERFACE}.Error.NotCorvane`,
                `Only the owner of ${CORVANE_NAME} may subscribe`);
            return;
        }
        Gio.DBus.session.call('org.freedesktop.DBus', '/org/freedesktop/DBus',
            'org.freedesktop.DBus', 'GetConnectionUnixProcessID', new GLib.Variant('(s)', [sender]),
            new GLib.VariantType('(u)'), Gio.DBusCallFlags.NONE, 1000, null,
            (connection, result) => {
                let pid;
                try {
                    [pid] = connection.call_finish(result).deep_unpack();
                } catch (e) {
                    invocation.return_gerror(e);
                    return;
                }
                this._unsubscribe();
                this._subscribe(sender, pid, wanted);
                invocation.return_value(new GLib.Variant('(s)', [this._version]));
            });
    }

    UnsubscribeAsync(parameters, invocation) {
        if (invocation.get_sender() === this._subscriber)
            this._unsubscribe();
        invocation.return_value(null);
    }

    ShowTopBarIconAsync([shown], invocation) {
        if (invocation.get_sender() === this._subscriber)
            this._showIcon(shown);
        invocation.return_value(null);
    }

    _subscribe(subscriber, pid, wanted) {
        const wants = key => wanted[key] && wanted[key].deep_unpack();
        this._subscriber = subscriber;
        this._pid = pid;
        this._front = null;
        if (wants('keys'))
            this._watchKeys();
        if (wants('keys') || wants('focus') || wants('placement')) {
            this._focusChange = global.display.connect('notify::focus-window',
                () => this._focusChanged(wants('focus')));
            this._focusChanged(wants('focus'));
        }
        if (wants('placement')) {
            this._created = global.display.connect('window-created',
                (display, window) => this._skipZoom(window));
            this._mapped = global.window_manager.connect('map', (wm, actor) => this._place(actor));
        }
        this._showIcon(wants('topBarIcon'));
    }

    _unsubscribe() {
        this._unwatchKeys();
        if (this._focusChange)
            global.display.disconnect(this._focusChange);
        if (this._mapped)
            global.window_manager.disconnect(this._mapped);
        if (this._created)
            global.display.disconnect(this._created);
        this._showIcon(false);
        this._focusChange = this._mapped = this._created = null;
        this._subscriber = this._front = null;
    }

    _emit(destination, name, parameters) {
        Gio.DBus.session.emit_signal(destination, COMPANION_PATH, COMPANION_INTERFACE, name,
            parameters);
    }

    // The Shell's idle monitor calls a user-active watch while it takes in an input, and then
    // drops it: each call sets the next watch first. An idle watch would serve the whole
    // subscription, but it is called only once input has paused for its interval, a millisecond
    // or more later and in a turn of the Shell's main loop of its own, which is no cheaper.
    _watchKeys() {
        this._idle = global.backend.get_core_idle_monitor();
        this._state = global.get_pointer();
        this._watchNextInput();
    }

    _watchNextInput() {
        this._activeWatch = this._idle.add_user_active_watch(() => {
            this._watchNextInput();
            this._sample();
        });
    }

    _unwatchKeys() {
        if (this._activeWatch)
            this._idle.remove_watch(this._activeWatch);
        this._activeWatch = 0;
    }

    // Compares the seat with how it was at the last input. Most input is typing with no modifier
    // held, which ends at the first comparison.
    _sample() {
        const [x, y, mask] = global.get_pointer();
        const [lastX, lastY, lastMask] = this._state;
        this._state[0] = x;
        this._state[1] = y;
        this._state[2] = mask;
        if (mask === lastMask && !(mask & HELD))
            return;
        let modifierChanged = false;
        for (const [bit, keysym] of MODIFIERS) {
            if ((mask & bit) === (lastMask & bit))
                continue;
            modifierChanged = true;
            this._emit(this._subscriber, 'ModifierKey',
                new GLib.Variant('(ubx)', [keysym, (mask & bit) !== 0, GLib.get_monotonic_time()]));
        }
        // Another key matters only while a modifier is held: it may break a hold.
        const otherChange = x !== lastX || y !== lastY || (mask & NOT_KEYS) !== (lastMask & NOT_KEYS);
        if (!modifierChanged && !otherChange && (mask & HELD) && !this._corvaneFocused)
            this._emit(this._subscriber, 'KeyPressed', null);
    }

    _focusChanged(tell) {
        const window = global.display.focus_window;
        this._corvaneFocused = window !== null && window.get_pid() === this._pid;
        if (window && !this._corvaneFocused)
            this._front = window;
        if (!tell)
            return;
        const app = window ? Shell.WindowTracker.get_default().get_window_app(window) : null;
        const id = app && app.get_id().endsWith('.desktop') ? app.get_id().slice(0, -8) : '';
        this._emit(this._subscriber, 'FocusChanged',
            new GLib.Variant('(us)', [window ? window.get_pid() : 0, id]));
    }

    // The Shell zooms each new window in from its bottom edge; the panel appears at once, as
    // everywhere else, with its own fade. It is told by its title, which a window made by a
    // Wayland client has only after it is made, before it maps.
    _skipZoom(window) {
        if (window.get_pid() !== this._pid)
            return;
        const skipIfPanel = () => {
            if (window.get_title() !== PANEL_TITLE)
                return false;
            Main.wm.skipNextEffect(window.get_compositor_private());
            return true;
        };
        if (skipIfPanel())
            return;
        const titled = window.connect('notify::title', () => {
            if (skipIfPanel())
                window.disconnect(titled);
        });
    }

    // Centred on the monitor of the window in front (the panel, just mapped, may have the focus
    // already), in the part of it windows may use.
    _place(actor) {
        const window = actor.meta_window;
        if (!window || window.get_pid() !== this._pid)
            return;
        if (window.get_title() === PANEL_TITLE)
            window.make_above();
        const move = () => {
            const monitor = this._front && this._front.get_compositor_private()
                ? this._front.get_monitor() : global.display.get_current_monitor();
            const area = Main.layoutManager.getWorkAreaForMonitor(monitor);
            const frame = window.get_frame_rect();
            window.move_frame(true, area.x + Math.round((area.width - frame.width) / 2),
                area.y + Math.round((area.height - frame.height) / 2));
        };
        move();
    }

    _showIcon(shown) {
        if (!shown) {
            this._button?.destroy();
            this._button = null;
            return;
        }
        if (this._button)
            return;
        this._button = new PanelMenu.Button(0.0, 'Corvane');
        this._button.add_child(new St.Icon({
            gicon: Gio.icon_new_for_string(`${this._folder}/corvane-symbolic.svg`),
            style_class: 'system-status-icon',
        }));
        this._button.menu.connect('open-state-changed', (menu, open) => {
            if (open)
                this._readMenu();
        });
        Main.panel.addToStatusArea('corvane-companion', this._button);
        this._readMenu();
    }

    // Corvane's tray menu: (id, label, enabled, separator) for each entry shown, in order.
    _readMenu() {
        const subscriber = this._subscriber;
        Gio.DBus.session.call(subscriber, MENU_PATH, MENU_INTERFACE, 'Entries', null,
            new GLib.VariantType('(a(ssbb))'), Gio.DBusCallFlags.NONE, 1000, null,
            (connection, result) => {
                let entries;
                try {
                    [entries] = connection.call_finish(result).deep_unpack();
                } catch (e) {
                    return;
                }
                if (!this._button || subscriber !== this._subscriber)
                    return;
                const menu = this._button.menu;
                menu.removeAll();
                for (const [id, label, enabled, separator] of entries) {
                    if (separator) {
                        menu.addMenuItem(new PopupMenu.PopupSeparatorMenuItem());
                        continue;
                    }
                    const item = new PopupMenu.PopupMenuItem(label);
                    item.setSensitive(enabled);
                    item.connect('activate', () => Gio.DBus.session.call(subscriber, MENU_PATH,
                        MENU_INTERFACE, 'Activate', new GLib.Variant('(s)', [id]), null,
                        Gio.DBusCallFlags.NONE, 1000, null, null));
                    menu.addMenuItem(item);
                }
            });
    }
}
