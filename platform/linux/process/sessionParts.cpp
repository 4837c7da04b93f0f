#include "sessionParts.h"

#include <QSet>

using namespace Qt::StringLiterals;

namespace {

const QSet<QString> &sessionNames()
{
    static const QSet<QString> names{
        // display servers and what starts them
        u"X"_s,
        u"Xorg"_s,
        u"Xorg.wrap"_s,
        u"Xwayland"_s,
        u"Xvfb"_s,
        u"Xephyr"_s,
        u"Xnest"_s,
        u"Xvnc"_s,
        u"Xtigervnc"_s,
        u"Xnx"_s,
        u"xinit"_s,
        u"startx"_s,
        u"gdm-x-session"_s,
        u"gdm-wayland-session"_s,
        u"gdm-session-worker"_s,
        u"sddm"_s,
        u"sddm-helper"_s,
        u"lightdm"_s,
        u"xfwm4-wayland"_s,
        // window managers and compositors
        u"openbox"_s,
        u"xfwm4"_s,
        u"marco"_s,
        u"metacity"_s,
        u"mutter"_s,
        u"muffin"_s,
        u"kwin"_s,
        u"kwin_x11"_s,
        u"kwin_wayland"_s,
        u"kwin_wayland_wrapper"_s,
        u"i3"_s,
        u"sway"_s,
        u"awesome"_s,
        u"bspwm"_s,
        u"dwm"_s,
        u"fluxbox"_s,
        u"blackbox"_s,
        u"icewm"_s,
        u"icewm-session"_s,
        u"jwm"_s,
        u"fvwm"_s,
        u"fvwm2"_s,
        u"fvwm3"_s,
        u"herbstluftwm"_s,
        u"qtile"_s,
        u"xmonad"_s,
        u"enlightenment"_s,
        u"twm"_s,
        u"mwm"_s,
        u"wmaker"_s,
        u"compiz"_s,
        u"picom"_s,
        u"compton"_s,
        u"xcompmgr"_s,
        u"labwc"_s,
        u"weston"_s,
        u"Hyprland"_s,
        u"river"_s,
        u"wayfire"_s,
        u"hikari"_s,
        u"gala"_s,
        u"deepin-kwin_x11"_s,
        u"budgie-wm"_s,
        u"spectrwm"_s,
        u"sawfish"_s,
        u"ratpoison"_s,
        u"matchbox-window-manager"_s,
        // shells, panels, desktops' backgrounds, docks, notifications
        u"gnome-shell"_s,
        u"gnome-shell-calendar-server"_s,
        u"gnome-panel"_s,
        u"gnome-flashback"_s,
        u"plasmashell"_s,
        u"krunner"_s,
        u"cinnamon"_s,
        u"cinnamon-launcher"_s,
        u"mate-panel"_s,
        u"xfce4-panel"_s,
        u"xfdesktop"_s,
        u"lxpanel"_s,
        u"lxqt-panel"_s,
        u"lxqt-runner"_s,
        u"lxqt-notificationd"_s,
        u"budgie-panel"_s,
        u"budgie-daemon"_s,
        u"dde-dock"_s,
        u"dde-desktop"_s,
        u"wingpanel"_s,
        u"plank"_s,
        u"tint2"_s,
        u"polybar"_s,
        u"waybar"_s,
        u"i3bar"_s,
        u"swaybar"_s,
        u"trayer"_s,
        u"stalonetray"_s,
        u"wrapper-2.0"_s,
        u"dunst"_s,
        u"mako"_s,
        u"xfce4-notifyd"_s,
        u"notification-daemon"_s,
        u"mate-notification-daemon"_s,
        u"notify-osd"_s,
        u"nemo-desktop"_s,
        u"desktop-icons"_s,
        u"ulauncher"_s,
        u"rofi"_s,
        u"dmenu"_s,
        u"wofi"_s,
        // session managers and settings
        u"systemd"_s,
        u"init"_s,
        u"gnome-session"_s,
        u"gnome-session-binary"_s,
        u"gnome-session-ctl"_s,
        u"gnome-settings-daemon"_s,
        u"startplasma-x11"_s,
        u"startplasma-wayland"_s,
        u"plasma_session"_s,
        u"ksmserver"_s,
        u"kded5"_s,
        u"kded6"_s,
        u"kdeinit5"_s,
        u"klauncher"_s,
        u"xfce4-session"_s,
        u"xfsettingsd"_s,
        u"xfconfd"_s,
        u"mate-session"_s,
        u"mate-settings-daemon"_s,
        u"cinnamon-session"_s,
        u"cinnamon-session-binary"_s,
        u"lxsession"_s,
        u"lxqt-session"_s,
        u"openbox-session"_s,
        u"budgie-desktop"_s,
        u"startdde"_s,
        u"dconf-service"_s,
        u"xsettingsd"_s,
        u"xfce4-power-manager"_s,
        u"mate-power-manager"_s,
        u"org_kde_powerdevil"_s,
        // buses, portals, accessibility, keys, sound, input methods, agents, lockers
        u"dbus-daemon"_s,
        u"dbus-broker"_s,
        u"dbus-broker-launch"_s,
        u"xdg-document-portal"_s,
        u"xdg-permission-store"_s,
        u"at-spi-bus-launcher"_s,
        u"at-spi2-registryd"_s,
        u"gvfsd"_s,
        u"gnome-keyring-daemon"_s,
        u"kwalletd5"_s,
        u"kwalletd6"_s,
        u"ssh-agent"_s,
        u"gpg-agent"_s,
        u"pipewire"_s,
        u"pipewire-pulse"_s,
        u"wireplumber"_s,
        u"pulseaudio"_s,
        u"fcitx"_s,
        u"fcitx5"_s,
        u"polkit-gnome-authentication-agent-1"_s,
        u"polkit-kde-authentication-agent-1"_s,
        u"polkit-mate-authentication-agent-1"_s,
        u"lxpolkit"_s,
        u"lxqt-policykit-agent"_s,
        u"xscreensaver"_s,
        u"xscreensaver-systray"_s,
        u"light-locker"_s,
        u"i3lock"_s,
        u"swaylock"_s,
        u"kscreenlocker_greet"_s,
        u"gnome-screensaver"_s,
        u"mate-screensaver"_s,
        u"cinnamon-screensaver"_s,
        u"xfce4-screensaver"_s,
        u"baloo_file"_s,
    };
    return names;
}

/// Families whose members are many: "gvfsd-trash", "gsd-color", "xdg-desktop-portal-hyprland".
bool isSessionName(const QString &name)
{
    for (const auto family : {"gvfsd-"_L1, "gsd-"_L1, "xdg-desktop-portal"_L1, "ibus-"_L1, "tracker-"_L1}) {
        if (name.startsWith(family))
            return true;
    }
    return sessionNames().contains(name);
}

} // namespace

bool isSessionPart(const ProcessFacts &process)
{
    if (process.id == 1 || process.state.kernelThread)
        return true;
    // An unreadable executable leaves the kernel's short name; a script (a Python panel) its own file's.
    const auto executable = baseName(process.executable);
    if (executable.isEmpty())
        return isSessionName(QString::fromLocal8Bit(process.state.command));
    if (isInterpreter(executable))
        return isSessionName(baseName(process.call.program));
    return isSessionName(executable);
}
