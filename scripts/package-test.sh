#!/usr/bin/env bash
# Builds the Debian package, installs it with apt-get, and tries it as an ordinary user would:
# kestrelvane-cli lists and encodes a folder, the window starts under Xvfb (its picture goes to
# SHOT, default /tmp/kestrelvane-package.png) and, closed, leaves its settings in the user's
# configuration folder. The package is removed at the end. It installs into the system, so it is
# not part of scripts/test.sh. Usage: scripts/package-test.sh [SHOT]; KV_DEB_BUILD_DIR sets the
# build folder (build-deb).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${KV_DEB_BUILD_DIR:-$root/build-deb}
shot=${1:-/tmp/kestrelvane-package.png}
sudo=()
[ "$(id -u)" -ne 0 ] && sudo=(sudo)
fail() { echo "package-test: $*" >&2; exit 1; }

# The executables, codec/ and help/ go to /usr/lib/kestrelvane; /usr/bin gets links to the two.
KV_BUILD_DIR=$build "$root/scripts/build.sh" -DKV_BUILD_TESTS=OFF -DCMAKE_INSTALL_PREFIX=/usr \
    -DKV_PROGRAM_DIR=lib/kestrelvane
rm -f "$build"/kestrelvane_*.deb
(cd "$build" && cpack -G DEB >/dev/null)
deb=$(ls "$build"/kestrelvane_*.deb)
echo "package: $deb"
depends=$(dpkg-deb -f "$deb" Depends)
echo "depends: $depends"
for p in lame madplay vorbis-tools musepack-tools alsa-utils libqt6widgets6 libqt6svg6; do
    grep -q "\\b$p\\b" <<<"$depends" || fail "$p missing from Depends"
done

work=$(mktemp -d)
cleanup() {
    DEBIAN_FRONTEND=noninteractive "${sudo[@]}" apt-get purge -y -qq kestrelvane >/dev/null || true
    "${sudo[@]}" rm -rf "$work"
}
trap cleanup EXIT
DEBIAN_FRONTEND=noninteractive "${sudo[@]}" apt-get install -y -qq "$deb" >/dev/null
for f in /usr/bin/kestrelvane /usr/bin/kestrelvane-cli /usr/lib/kestrelvane/codec/lame \
         /usr/lib/kestrelvane/help/rus/index.htm /usr/lib/kestrelvane/help/rus/screenshot.png \
         /usr/share/applications/io.github.kestrelvane.Kestrelvane.desktop /usr/share/icons/hicolor/scalable/apps/kestrelvane.svg \
         /usr/share/metainfo/io.github.kestrelvane.Kestrelvane.metainfo.xml; do
    [ -s "$f" ] || fail "$f not installed"
done
for page in kestrelvane kestrelvane-cli; do
    man -w "$page" >/dev/null || fail "no man page for $page"
done

# An ordinary user, who cannot write beside the installed program: nobody, with a home here.
user=()
if [ "$(id -u)" -eq 0 ]; then
    user=(setpriv --reuid=65534 --regid=65534 --clear-groups)
fi
mkdir -p "$work/home" "$work/Music/Evening Concert"
music="$work/Music/Evening Concert"
for track in "Overture:220:4" "Allegro:330:3" "Adagio:262:5"; do
    IFS=: read -r name freq secs <<<"$track"
    sox -q -n -r 44100 -c 2 -b 16 "$music/$name.wav" synth "$secs" sine "$freq" vol 0.4
done
[ ${#user[@]} -eq 0 ] || chown -R 65534:65534 "$work"
chmod 755 "$work"
as_user() { env -i PATH=/usr/bin:/bin HOME="$work/home" LANG=C.UTF-8 "${user[@]}" "$@"; }

as_user kestrelvane-cli list "$music" | tee "$work/list.txt"
grep -q "^Overture.wav" "$work/list.txt" || fail "kestrelvane-cli list did not list the folder"
as_user kestrelvane-cli convert --to mp3 "$music" "Overture.wav" >"$work/convert.txt" || fail "convert failed: $(cat "$work/convert.txt")"
[ -s "$music/Overture.mp3" ] || fail "the installed codec folder made no MP3"
as_user kestrelvane-cli list --kind mp3 "$music" | head -2

# The window under Xvfb, then closed as a window manager would ask, so that it saves its settings.
cat >"$work/close-window.py" <<'PY'
import ctypes, sys
x = ctypes.cdll.LoadLibrary("libX11.so.6")
x.XOpenDisplay.restype = ctypes.c_void_p
x.XInternAtom.restype = ctypes.c_ulong
x.XInternAtom.argtypes = [ctypes.c_void_p, ctypes.c_char_p, ctypes.c_int]
x.XSendEvent.argtypes = [ctypes.c_void_p, ctypes.c_ulong, ctypes.c_int, ctypes.c_long, ctypes.c_void_p]
x.XFlush.argtypes = [ctypes.c_void_p]
class ClientMessage(ctypes.Structure):
    _fields_ = [("type", ctypes.c_int), ("serial", ctypes.c_ulong), ("send_event", ctypes.c_int),
                ("display", ctypes.c_void_p), ("window", ctypes.c_ulong), ("message_type", ctypes.c_ulong),
                ("format", ctypes.c_int), ("l", ctypes.c_long * 5)]
class Event(ctypes.Union):
    _fields_ = [("xclient", ClientMessage), ("pad", ctypes.c_long * 24)]
d = x.XOpenDisplay(None)
e = Event()
e.xclient.type = 33  # ClientMessage
e.xclient.display = d
e.xclient.window = int(sys.argv[1])
e.xclient.message_type = x.XInternAtom(d, b"WM_PROTOCOLS", 0)
e.xclient.format = 32
e.xclient.l[0] = x.XInternAtom(d, b"WM_DELETE_WINDOW", 0)
x.XSendEvent(d, e.xclient.window, 0, 0, ctypes.byref(e))
x.XFlush(d)
PY
cat >"$work/session.sh" <<INNER
#!/usr/bin/env bash
set -e
kestrelvane "$music" &
pid=\$!
win=\$(timeout 20 xdotool search --sync --name '^Kestrelvane\$' | head -1)
[ -n "\$win" ] || { echo "the window did not appear" >&2; kill \$pid; exit 1; }
xdotool windowmove "\$win" 0 0 windowsize "\$win" 1024 700
sleep 2
import -window root -crop 1024x700+0+0 +repage "$work/shot.png"
python3 "$work/close-window.py" "\$win"
for i in \$(seq 50); do kill -0 \$pid 2>/dev/null || break; sleep 0.1; done
if kill -0 \$pid 2>/dev/null; then echo "the window did not close" >&2; kill \$pid; exit 1; fi
wait \$pid
INNER
chmod 755 "$work/session.sh" "$work/close-window.py"
as_user xvfb-run -a -s "-screen 0 1024x700x24" "$work/session.sh"
cp "$work/shot.png" "$shot"
echo "window: $shot"

config="$work/home/.config/kestrelvane/kestrvan.cfg"
[ "$(stat -c %s "$config" 2>/dev/null)" = 10310 ] || fail "the window left no settings in $config"
[ ! -e /usr/lib/kestrelvane/kestrvan.cfg ] || fail "settings were written beside the installed program"
as_user kestrelvane-cli options 2>"$work/options.err" >/dev/null
[ ! -s "$work/options.err" ] || fail "kestrelvane-cli did not read the window's settings: $(cat "$work/options.err")"
echo "settings: $config (read by kestrelvane-cli too)"
echo "package-test: passed"
