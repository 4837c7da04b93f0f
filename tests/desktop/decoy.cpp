// A program that plays an application on an X11 desktop: a real window with a name in big letters that closes
// when it is asked to. Plain xcb, so that a copy of the executable under another name runs anywhere.

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <sys/prctl.h>
#include <unistd.h>
#include <vector>
#include <xcb/xcb.h>

namespace {

const char *const usage =
    "usage: %s [options]\n"
    "  --title TEXT     the window's title and the text in it (default: the program's name)\n"
    "  --class NAME     class part of WM_CLASS (default: the program's name)\n"
    "  --instance NAME  instance part of WM_CLASS (default: the class)\n"
    "  --windows N      number of windows, 0 for none (default 1)\n"
    "  --helpers N      number of processes it starts that only wait (default 0)\n"
    "  --color RRGGBB   the window's colour (default 35506b)\n"
    "  --geometry WxH   the window's size (default 640x360)\n"
    "  --type NAME      _NET_WM_WINDOW_TYPE_NAME, for example DOCK\n"
    "  --pid N          claim that process number; 0 claims none\n"
    "  --machine NAME   claim that host\n"
    "  --stubborn       ignore polite requests: WM_DELETE_WINDOW and SIGTERM\n"
    "  --deaf           windows that do not take part in WM_DELETE_WINDOW\n"
    "  --hide           hide the window when asked to close, as programs with a tray icon do\n"
    "Writes \"ready PID\" when its windows are shown.\n";

struct Options
{
    std::string title, className, instance, type, machine;
    int windows = 1;
    int helpers = 0;
    uint32_t color = 0x35506b;
    uint16_t width = 640;
    uint16_t height = 360;
    long pid = -1; // the true one
    bool stubborn = false;
    bool deaf = false;
    bool hide = false;
};

struct Free
{
    void operator()(void *memory) const { free(memory); }
};
template <typename Type>
using Owned = std::unique_ptr<Type, Free>;

[[noreturn]] void refuse(const char *program)
{
    fprintf(stderr, usage, program);
    exit(2);
}

bool takeValue(Options &options, const std::string &name, const char *value)
{
    if (name == "--title")
        options.title = value;
    else if (name == "--class")
        options.className = value;
    else if (name == "--instance")
        options.instance = value;
    else if (name == "--type")
        options.type = value;
    else if (name == "--machine")
        options.machine = value;
    else if (name == "--windows")
        options.windows = atoi(value);
    else if (name == "--helpers")
        options.helpers = atoi(value);
    else if (name == "--pid")
        options.pid = atol(value);
    else if (name == "--color")
        options.color = uint32_t(strtoul(value, nullptr, 16));
    else if (name == "--geometry")
        return sscanf(value, "%hux%hu", &options.width, &options.height) == 2;
    else
        return false;
    return true;
}

Options read(int count, char **words)
{
    Options options;
    const char *slash = strrchr(words[0], '/');
    options.title = options.className = slash ? slash + 1 : words[0];
    char host[256] = {};
    gethostname(host, sizeof(host) - 1);
    options.machine = host;
    for (int at = 1; at < count; ++at) {
        if (strcmp(words[at], "--stubborn") == 0)
            options.stubborn = true;
        else if (strcmp(words[at], "--deaf") == 0)
            options.deaf = true;
        else if (strcmp(words[at], "--hide") == 0)
            options.hide = true;
        else if (at + 1 >= count || !takeValue(options, words[at], words[at + 1]))
            refuse(words[0]);
        else
            ++at;
    }
    if (options.instance.empty())
        options.instance = options.className;
    return options;
}

class Decoy
{
public:
    Decoy(xcb_connection_t *connection, Options options)
        : m_connection(connection)
        , m_screen(xcb_setup_roots_iterator(xcb_get_setup(connection)).data)
        , m_options(std::move(options))
        , m_protocols(atom("WM_PROTOCOLS"))
        , m_delete(atom("WM_DELETE_WINDOW"))
    {
        drawLetters();
        for (int number = 0; number < m_options.windows; ++number)
            m_windows.push_back(openWindow(number));
        xcb_flush(m_connection);
    }

    void run()
    {
        const Owned<xcb_get_input_focus_reply_t> shown(
            xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
        printf("ready %d\n", int(getpid()));
        fflush(stdout);
        bool open = true;
        while (open) {
            const Owned<xcb_generic_event_t> event(xcb_wait_for_event(m_connection));
            open = event && take(*event);
        }
    }

private:
    xcb_atom_t atom(const std::string &name) const
    {
        const auto cookie = xcb_intern_atom(m_connection, 0, uint16_t(name.size()), name.data());
        const Owned<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(m_connection, cookie, nullptr));
        return reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
    }

    void setText(xcb_window_t window, xcb_atom_t property, xcb_atom_t type, const std::string &text) const
    {
        xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, window, property, type, 8,
                            uint32_t(text.size()), text.data());
    }
    void setNumber(xcb_window_t window, xcb_atom_t property, xcb_atom_t type, uint32_t number) const
    {
        xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, window, property, type, 32, 1, &number);
    }

    xcb_window_t openWindow(int number) const
    {
        const auto window = xcb_generate_id(m_connection);
        const uint32_t values[] = {m_options.color, XCB_EVENT_MASK_EXPOSURE};
        const auto offset = int16_t(40 * number);
        xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, window, m_screen->root, offset, offset,
                          m_options.width, m_options.height, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                          m_screen->root_visual, XCB_CW_BACK_PIXEL | XCB_CW_EVENT_MASK, values);
        setText(window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING,
                m_options.instance + '\0' + m_options.className + '\0');
        setText(window, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, m_options.title);
        setText(window, atom("_NET_WM_NAME"), atom("UTF8_STRING"), m_options.title);
        setText(window, XCB_ATOM_WM_CLIENT_MACHINE, XCB_ATOM_STRING, m_options.machine);
        const auto claimed = m_options.pid < 0 ? long(getpid()) : m_options.pid;
        if (claimed > 0)
            setNumber(window, atom("_NET_WM_PID"), XCB_ATOM_CARDINAL, uint32_t(claimed));
        if (!m_options.deaf)
            setNumber(window, m_protocols, XCB_ATOM_ATOM, m_delete);
        if (!m_options.type.empty())
            setNumber(window, atom("_NET_WM_WINDOW_TYPE"), XCB_ATOM_ATOM,
                      atom("_NET_WM_WINDOW_TYPE_" + m_options.type));
        xcb_map_window(m_connection, window);
        return window;
    }

    /// Draws the title with the server's one sure font and keeps which of its points are set.
    void drawLetters()
    {
        const auto font = xcb_generate_id(m_connection);
        xcb_open_font(m_connection, font, 5, "fixed");
        const auto text = m_options.title.substr(0, 60);
        m_columns = int(text.size()) * cellWidth;
        if (m_columns == 0)
            return;
        const auto pixmap = xcb_generate_id(m_connection);
        xcb_create_pixmap(m_connection, m_screen->root_depth, pixmap, m_screen->root, uint16_t(m_columns),
                          rows);
        const auto pen = xcb_generate_id(m_connection);
        const uint32_t values[] = {0xffffff, 0, font};
        xcb_create_gc(m_connection, pen, pixmap, XCB_GC_FOREGROUND | XCB_GC_BACKGROUND | XCB_GC_FONT, values);
        const uint32_t black = 0;
        const auto eraser = xcb_generate_id(m_connection);
        xcb_create_gc(m_connection, eraser, pixmap, XCB_GC_FOREGROUND, &black);
        const xcb_rectangle_t all{0, 0, uint16_t(m_columns), rows};
        xcb_poly_fill_rectangle(m_connection, pixmap, eraser, 1, &all);
        xcb_image_text_8(m_connection, uint8_t(text.size()), pixmap, pen, 0, baseline, text.data());
        const auto cookie = xcb_get_image(m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, pixmap, 0, 0,
                                          uint16_t(m_columns), rows, ~0u);
        const Owned<xcb_get_image_reply_t> image(xcb_get_image_reply(m_connection, cookie, nullptr));
        if (!image)
            return;
        const auto *data = xcb_get_image_data(image.get());
        const auto stride = xcb_get_image_data_length(image.get()) / rows;
        const auto pointSize = stride / m_columns;
        for (int row = 0; row < rows; ++row) {
            for (int column = 0; column < m_columns; ++column) {
                if (pointSize > 0 && data[row * stride + column * pointSize] != 0)
                    m_points.push_back({int16_t(column), int16_t(row), 1, 1});
            }
        }
    }

    void paint(xcb_window_t window) const
    {
        if (m_columns == 0)
            return;
        const auto scale =
            std::max(1, std::min(m_options.width * 9 / 10 / m_columns, m_options.height / 2 / rows));
        const auto left = (m_options.width - scale * m_columns) / 2;
        const auto top = (m_options.height - scale * rows) / 2;
        std::vector<xcb_rectangle_t> blocks;
        for (const auto &point : m_points)
            blocks.push_back({int16_t(left + point.x * scale), int16_t(top + point.y * scale),
                              uint16_t(scale), uint16_t(scale)});
        const auto pen = xcb_generate_id(m_connection);
        xcb_create_gc(m_connection, pen, window, XCB_GC_FOREGROUND, &m_screen->white_pixel);
        xcb_poly_fill_rectangle(m_connection, window, pen, uint32_t(blocks.size()), blocks.data());
        xcb_free_gc(m_connection, pen);
        xcb_flush(m_connection);
    }

    /// False when the program is to end.
    bool take(const xcb_generic_event_t &event)
    {
        const auto type = event.response_type & 0x7f;
        if (type == XCB_EXPOSE)
            paint(reinterpret_cast<const xcb_expose_event_t &>(event).window);
        if (type != XCB_CLIENT_MESSAGE)
            return true;
        const auto &message = reinterpret_cast<const xcb_client_message_event_t &>(event);
        if (message.type != m_protocols || message.data.data32[0] != m_delete || m_options.stubborn)
            return true;
        if (m_options.hide)
            xcb_unmap_window(m_connection, message.window);
        else
            xcb_destroy_window(m_connection, message.window);
        xcb_flush(m_connection);
        std::erase(m_windows, message.window);
        return m_options.hide || !m_windows.empty();
    }

    // "fixed" is the 6 by 13 font that every X server has built in.
    static constexpr int cellWidth = 6;
    static constexpr int rows = 13;
    static constexpr int baseline = 11;

    xcb_connection_t *m_connection;
    xcb_screen_t *m_screen;
    Options m_options;
    xcb_atom_t m_protocols;
    xcb_atom_t m_delete;
    int m_columns = 0;
    std::vector<xcb_rectangle_t> m_points;
    std::vector<xcb_window_t> m_windows;
};

void startHelper()
{
    if (fork() != 0)
        return;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    for (;;)
        pause();
}

} // namespace

int main(int count, char **words)
{
    const auto options = read(count, words);
    if (options.stubborn)
        signal(SIGTERM, SIG_IGN);
    for (int number = 0; number < options.helpers; ++number)
        startHelper();
    auto *connection = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(connection)) {
        fprintf(stderr, "%s: no X server\n", words[0]);
        return 1;
    }
    Decoy(connection, options).run();
    xcb_disconnect(connection);
    return 0;
}
