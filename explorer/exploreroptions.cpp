#include "explorer/exploreroptions.h"

#include <algorithm>

#include <oviapi/systemmetrics.h>
#include <xmlutils/element.h>
#include <xmlutils/exception.h>

namespace {

constexpr int defaultWidth = 1040; // px
constexpr int defaultHeight = 680;

OviAPI::Font defaultGridFont()
{
    return {L"Helvetica", 10};
}

void writeFont(XMLUtils::XMLElementA& element, const OviAPI::Font& font,
               XMLUtils::XMLEncoding encoding)
{
    element.setAttribute("ClassName", "Font");
    element.setAttribute("ClassVersion", 1);
    element.addChild("Name").setString(font.name(), encoding);
    element.addChild("Size").setInteger(font.size());
    element.addChild("Bold").setBoolean(font.bold());
    element.addChild("Italic").setBoolean(font.italic());
    element.addChild("Underline").setBoolean(font.underline());
    element.addChild("Strikeout").setBoolean(font.strikeout());
}

OviAPI::Font readFont(const XMLUtils::XMLElementA& element, XMLUtils::XMLEncoding encoding)
{
    return {
        element.getChild("Name").getString(encoding), element.getChild("Size").getInteger(),
        element.getChild("Bold").getBoolean(),        element.getChild("Italic").getBoolean(),
        element.getChild("Underline").getBoolean(),   element.getChild("Strikeout").getBoolean()};
}

void writeConnection(XMLUtils::XMLElementA& element, const Connection& connection,
                     XMLUtils::XMLEncoding encoding)
{
    element.addChild("Engine").setString(connection.engine, encoding);
    element.addChild("Path").setString(connection.path, encoding);
    element.addChild("Verify").setBoolean(connection.verify);
    element.addChild("Host").setString(connection.host, encoding);
    element.addChild("Port").setInteger(connection.port);
    element.addChild("Database").setString(connection.database, encoding);
    element.addChild("User").setString(connection.user, encoding);
    element.addChild("Parameters").setString(connection.parameters, encoding);
    element.addChild("Encryption").setInteger(connection.encryption);
    element.addChild("ReadOnly").setBoolean(connection.readOnly);
    element.addChild("LockWait").setInteger(connection.lockWait);
}

// Runs one reading step; a key that is missing or bad gives the fallback.
template<class Read, class Fallback>
void readOr(Read read, Fallback fallback)
{
    try {
        read();
    } catch (const XMLUtils::XMLException&) {
        fallback();
    }
}

// Throws XMLException when a part is missing or out of its range.
Connection readConnection(const XMLUtils::XMLElementA& element, XMLUtils::XMLEncoding encoding)
{
    Connection connection;
    connection.engine = element.getChild("Engine").getString(encoding);
    connection.path = element.getChild("Path").getString(encoding);
    connection.verify = element.getChild("Verify").getBoolean();
    connection.host = element.getChild("Host").getString(encoding);
    connection.port = element.getChild("Port").getInteger();
    connection.database = element.getChild("Database").getString(encoding);
    connection.user = element.getChild("User").getString(encoding);
    connection.parameters = element.getChild("Parameters").getString(encoding);
    readOr([&] { connection.encryption = element.getChild("Encryption").getInteger(); }, [] {});
    connection.readOnly = element.getChild("ReadOnly").getBoolean();
    connection.lockWait = element.getChild("LockWait").getInteger();
    connection.port = std::clamp(connection.port, 0, Connection::HighestPort);
    if (connection.encryption < Connection::AsUsual || connection.encryption > Connection::Checked)
        connection.encryption = Connection::AsUsual;
    connection.lockWait = std::clamp(connection.lockWait, 0, Connection::LongestWait);
    return connection;
}

// A connection that cannot be read is left out.
RecentConnections readConnections(const XMLUtils::XMLElementA& element,
                                  XMLUtils::XMLEncoding encoding)
{
    RecentConnections connections;
    for (size_t i = element.childCount(); i > 0; --i) { // the oldest first
        try {
            connections.add(readConnection(element.child(i - 1), encoding));
        } catch (const XMLUtils::XMLException&) {
            continue; // the others can still be used
        }
    }
    return connections;
}

} // namespace

void ExplorerOptions::serialize(XMLUtils::XMLElementA& element,
                                XMLUtils::XMLEncoding encoding) const
{
    TypicalOptions::serialize(element, encoding);
    element.addChild("LastDatabase").setString(LastDatabase, encoding);
    element.addChild("Splitter").setInteger(Splitter);
    element.addChild("ToolBar").setBoolean(ToolBar);
    element.addChild("ValueViewWidth").setInteger(ValueView.width);
    element.addChild("ValueViewHeight").setInteger(ValueView.height);
    writeFont(element.addChild("FontGrid"), FontGrid, encoding);
    XMLUtils::XMLElementA& connections = element.addChild("Connections");
    for (const Connection& connection : Connections.all())
        writeConnection(connections.addChild("Connection"), connection, encoding);
    RemoveConnection.serialize(element.addChild("RemoveConnection"), encoding);
    DeleteRow.serialize(element.addChild("DeleteRow"), encoding);
}

void ExplorerOptions::deserialize(const XMLUtils::XMLElementA& element,
                                  XMLUtils::XMLEncoding encoding)
{
    TypicalOptions::deserialize(element, encoding);
    readOr([&] { LastDatabase = element.getChild("LastDatabase").getString(encoding); },
           [&] { LastDatabase.clear(); });
    readOr([&] { Splitter = element.getChild("Splitter").getInteger(); },
           [&] { Splitter = DefaultSplitter; });
    if (Splitter < MinSplitter || Splitter > MaxSplitter)
        Splitter = DefaultSplitter;
    readOr([&] { ToolBar = element.getChild("ToolBar").getBoolean(); }, [&] { ToolBar = true; });
    readOr(
        [&] {
            ValueView = {element.getChild("ValueViewWidth").getInteger(),
                         element.getChild("ValueViewHeight").getInteger()};
        },
        [&] { ValueView = {}; });
    if (ValueView.width < 0 || ValueView.width > MaxSplitter || ValueView.height < 0 ||
        ValueView.height > MaxSplitter)
        ValueView = {};
    readOr([&] { FontGrid = readFont(element.getChild("FontGrid"), encoding); },
           [&] { FontGrid = defaultGridFont(); });
    readOr([&] { Connections = readConnections(element.getChild("Connections"), encoding); },
           [&] { Connections = {}; });
    readOr([&] { RemoveConnection.deserialize(element.getChild("RemoveConnection"), encoding); },
           [&] { RemoveConnection = {}; });
    readOr([&] { DeleteRow.deserialize(element.getChild("DeleteRow"), encoding); },
           [&] { DeleteRow = {}; });
}

void ExplorerOptions::initDefaults()
{
    TypicalOptions::initDefaults();
    LastDatabase.clear();
    Splitter = DefaultSplitter;
    ToolBar = true;
    ValueView = {};
    FontGrid = defaultGridFont();
    Connections = {};
    RemoveConnection = {};
    DeleteRow = {};
}

void ExplorerOptions::initDefaultMainFormRect()
{
    const OviAPI::Rect area = OviAPI::SystemMetrics::getAvailableRect();
    const auto width = static_cast<int32_t>(std::min<int64_t>(defaultWidth, area.width()));
    const auto height = static_cast<int32_t>(std::min<int64_t>(defaultHeight, area.height()));
    MainFormRect.left = area.left + static_cast<int32_t>((area.width() - width) / 2);
    MainFormRect.top = area.top + static_cast<int32_t>((area.height() - height) / 2);
    MainFormRect.right = MainFormRect.left + width;
    MainFormRect.bottom = MainFormRect.top + height;
}

bool ExplorerOptions::operator==(const ExplorerOptions& other) const
{
    return TypicalOptions::operator==(other) && LastDatabase == other.LastDatabase &&
           Splitter == other.Splitter && ToolBar == other.ToolBar && ValueView == other.ValueView &&
           FontGrid == other.FontGrid && Connections == other.Connections &&
           RemoveConnection == other.RemoveConnection && DeleteRow == other.DeleteRow;
}
