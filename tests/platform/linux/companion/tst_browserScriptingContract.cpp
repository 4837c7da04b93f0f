#include "BrowserScriptingContract.h"
#include "CompanionScripting.h"
#include "CompanionStage.h"
#include "FakeBrowserScripting.h"
#include "suite.h"

using namespace Qt::StringLiterals;

namespace {

class FakeStage : public TabLayout
{
public:
    BrowserScripting &scripting() override { return m_scripting; }
    QString browser() const override { return u"Chromium"_s; }
    void setWindows(const std::vector<std::vector<QString>> &windows) override
    {
        m_windows = windows;
        layOut();
    }
    void bringToFront(int window, int tab) override
    {
        m_front = {window, tab};
        layOut();
    }
    void takeKeyboardAway() override
    {
        m_front.reset();
        layOut();
    }
    void goTo(int window, int tab, const QString &url) override
    {
        m_windows[std::size_t(window - 1)][std::size_t(tab - 1)] = url;
        layOut();
    }
    void remove(int window, int tab) override
    {
        auto &tabs = m_windows[std::size_t(window - 1)];
        tabs.erase(tabs.begin() + tab - 1);
        layOut();
    }

private:
    void layOut()
    {
        auto &tabs = m_scripting.tabs[browser()];
        tabs.clear();
        m_scripting.frontUrls.clear();
        for (int window = 1; window <= int(m_windows.size()); ++window) {
            const auto &urls = m_windows[std::size_t(window - 1)];
            for (int tab = 1; tab <= int(urls.size()); ++tab) {
                const auto &url = urls[std::size_t(tab - 1)];
                if (url.isEmpty())
                    continue;
                tabs.push_back({browser(), window, tab, url});
                if (m_front == std::pair(window, tab))
                    m_scripting.frontUrls[browser()] = url;
            }
        }
    }

    FakeBrowserScripting m_scripting;
    std::vector<std::vector<QString>> m_windows;
    std::optional<std::pair<int, int>> m_front;
};

/// The adapter with a browser played at the other end of its socket, which closes what it is asked to.
class ConnectedStage : public TabLayout
{
public:
    ConnectedStage()
        : m_scripting(m_stage.server)
        , m_client(m_stage.connect())
    {
        m_client->hello();
        QObject::connect(&m_client->socket(), &QLocalSocket::readyRead, &m_client->socket(),
                         [this] { obey(); });
        obey();
    }

    BrowserScripting &scripting() override { return m_scripting; }
    QString browser() const override { return u"Chromium"_s; }
    void setWindows(const std::vector<std::vector<QString>> &windows) override
    {
        m_windows.clear();
        for (const auto &urls : windows) {
            m_windows.push_back({++m_lastId, {}, {}});
            for (const auto &url : urls)
                m_windows.back().tabs.push_back({++m_lastId, url});
        }
        nlohmann::json list = nlohmann::json::array();
        for (const auto &window : m_windows) {
            nlohmann::json tabs = nlohmann::json::array();
            for (const auto &tab : window.tabs)
                tabs.push_back({{"id", tab.id}, {"url", tab.url.toStdString()}});
            list.push_back({{"id", window.id}, {"active", window.tabs.front().id}, {"tabs", tabs}});
        }
        send({{"type", "windows"}, {"windows", list}, {"focused", nullptr}});
    }
    void bringToFront(int window, int tab) override
    {
        const auto &known = m_windows[std::size_t(window - 1)];
        send({{"type", "active"}, {"window", known.id}, {"tab", known.tabs[std::size_t(tab - 1)].id}});
        send({{"type", "focus"}, {"window", known.id}});
    }
    void takeKeyboardAway() override { send({{"type", "focus"}, {"window", nullptr}}); }
    void goTo(int window, int tab, const QString &url) override
    {
        auto &known = m_windows[std::size_t(window - 1)].tabs[std::size_t(tab - 1)];
        known.url = url;
        send({{"type", "address"}, {"tab", known.id}, {"url", url.toStdString()}});
    }
    void remove(int window, int tab) override
    {
        auto &tabs = m_windows[std::size_t(window - 1)].tabs;
        send({{"type", "gone"}, {"tab", tabs[std::size_t(tab - 1)].id}});
        tabs.erase(tabs.begin() + tab - 1);
    }

private:
    void send(const nlohmann::json &message) { m_client->send(QByteArray::fromStdString(message.dump())); }

    void obey()
    {
        const auto bytes = m_client->socket().readAll();
        m_frames.append({bytes.constData(), std::size_t(bytes.size())});
        while (const auto text = m_frames.next()) {
            const auto message = nlohmann::json::parse(*text);
            if (message["type"] != "close")
                continue;
            for (const auto &tab : message["tabs"])
                close(tab["id"].get<qint64>(), QString::fromStdString(tab["url"].get<std::string>()));
        }
    }
    void close(qint64 id, const QString &url)
    {
        for (auto &window : m_windows) {
            if (std::erase(window.tabs, CompanionTab{id, url}))
                send({{"type", "gone"}, {"tab", id}});
        }
    }

    CompanionStage m_stage;
    CompanionScripting m_scripting;
    std::unique_ptr<CompanionClient> m_client;
    FrameReader m_frames{longestFrameToBrowser};
    std::vector<CompanionWindow> m_windows;
    qint64 m_lastId = 100;
};

} // namespace

class tst_browserScriptingContract : public BrowserScriptingContract
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase_data()
    {
        QTest::addColumn<bool>("real");
        QTest::newRow("fake") << false;
        QTest::newRow("companion") << true;
    }

protected:
    std::unique_ptr<TabLayout> makeStage() override
    {
        QFETCH_GLOBAL(bool, real);
        if (real)
            return std::make_unique<ConnectedStage>();
        return std::make_unique<FakeStage>();
    }
};

QUORVEL_TEST(tst_browserScriptingContract, QCoreApplication)
#include "tst_browserScriptingContract.moc"
