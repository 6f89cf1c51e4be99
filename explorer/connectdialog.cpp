#include "explorer/connectdialog.h"

#include <algorithm>

#include <oviapi/filedialog.h>
#include <oviapi/painter.h>
#include <oviapi/text.h>

#include "app/yesnoconfirmdlg.h"
#include "explorer/opendialog.h"

namespace {

constexpr int hidePicture = 222001; // of the library's resources: minimize
constexpr int inner = 10;           // px around what stands in a group
constexpr int rowGap = 4;           // px between two rows of a form
constexpr int hideButtonRoom = 30;  // px at the right and bottom edges of the advanced settings
constexpr int captionWidth = 70;    // px that a group box gives its caption
constexpr int titleHeight = 18;     // px of a text that a titled panel shows whole
constexpr int numberWidth = 100;    // px, at the usual text size
constexpr int longestMessage = 6;   // lines

// By Connection::Encryption.
constexpr TextId encryptionTexts[] = {TextEncryptionUsual, TextEncryptionNever,
                                      TextEncryptionAlways, TextEncryptionChecked};

std::wstring trimmed(const std::wstring& text)
{
    const size_t first = text.find_first_not_of(L" \t");
    if (first == std::wstring::npos)
        return {};
    return text.substr(first, text.find_last_not_of(L" \t") - first + 1);
}

} // namespace

ConnectDialog::ConnectDialog(WExtForm& above, ExplorerOptions& options,
                             std::vector<DorCPP::Engine> engines)
    : ExplorerDialog(above)
    , m_options(options)
    , m_engines(std::move(engines))
    , m_opening(*this)
    , m_advanced(above.getResource(), hidePicture)
{
}

const DorCPP::Engine& ConnectDialog::engine() const
{
    return m_engines[static_cast<size_t>(std::max(0, m_engine.currentLine()))];
}

Connection ConnectDialog::connection() const
{
    Connection connection;
    connection.engine = OviAPI::utf8ToWide(engine().scheme);
    connection.readOnly = m_readOnly.isChecked();
    connection.lockWait = static_cast<int32_t>(m_wait.value());
    if (!isServer()) {
        const std::wstring prefix = connection.engine + L":";
        std::wstring typed = trimmed(m_path.text());
        if (typed.compare(0, prefix.size(), prefix) == 0)
            typed.erase(0, prefix.size());
        connection.path = resolvedDatabaseName(typed, m_options.LastLoadDirectory);
        connection.verify = m_verify.isChecked();
        return connection;
    }
    connection.host = trimmed(m_host.text());
    connection.port = static_cast<int32_t>(m_port.value());
    connection.database = trimmed(m_database.text());
    connection.user = trimmed(m_user.text());
    connection.parameters = trimmed(m_parameters.text());
    connection.encryption = std::max(0, m_encryption.currentLine());
    return connection;
}

// --- making the controls, in the order of the Tab key

void ConnectDialog::createControls()
{
    createRecent();
    add(m_engineLabel);
    add(m_engine);
    for (const DorCPP::Engine& each : m_engines)
        m_engine.insertLine(OviAPI::utf8ToWide(each.title).c_str());
    m_engine.setCurrentLine(0);
    m_engineLabel.setBuddy(&m_engine);
    createFile();
    createServer();
    createAdvanced();
    m_message.setStyle(OviAPI::WStatic::WordWrap);
    for (OviAPI::WTypicalControl* control : std::initializer_list<OviAPI::WTypicalControl*>{
             &m_message, &m_test, &m_connect, &m_cancel})
        add(*control);
    setDefaultButton(&m_connect);
    OviAPI::connect<&OviAPI::WLineList::onSelect>(m_engine, *this, &ConnectDialog::onEngine);
    OviAPI::connect<&OviAPI::WButton::onPush>(m_test, *this, &ConnectDialog::onTestPush);
    OviAPI::connect<&OviAPI::WButton::onPush>(m_connect, *this, &ConnectDialog::onConnectPush);
    OviAPI::connect<&OviAPI::WButton::onPush>(m_cancel, *this, &ConnectDialog::onCancelPush);
    showAdvanced(false);
    loadRecent();
    const auto& recent = m_options.Connections.all();
    fill(recent.empty() ? Connection() : recent.front());
    focusFault();
}

void ConnectDialog::createRecent()
{
    for (OviAPI::WTypicalControl* control :
         std::initializer_list<OviAPI::WTypicalControl*>{&m_recentLabel, &m_recent, &m_remove})
        add(*control);
    m_recentLabel.setBuddy(&m_recent);
    OviAPI::connect<&OviAPI::WLineList::onSelect>(m_recent, *this, &ConnectDialog::onRecent);
    OviAPI::connect<&OviAPI::WButton::onPush>(m_remove, *this, &ConnectDialog::onRemovePush);
}

void ConnectDialog::createFile()
{
    m_file.setParent(&content());
    m_file.create();
    for (OviAPI::WTypicalControl* control :
         std::initializer_list<OviAPI::WTypicalControl*>{&m_pathLabel, &m_path, &m_browse})
        add(*control, m_file);
    m_pathLabel.setBuddy(&m_path);
    OviAPI::connect<&OviAPI::WButton::onPush>(m_browse, *this, &ConnectDialog::onBrowsePush);
}

void ConnectDialog::createServer()
{
    m_server.setParent(&content());
    m_server.create();
    m_port.setRange(0, Connection::HighestPort);
    m_password.setPassword(true);
    for (const Row& row : std::initializer_list<Row>{{&m_hostLabel, &m_host},
                                                     {&m_portLabel, &m_port},
                                                     {&m_databaseLabel, &m_database},
                                                     {&m_userLabel, &m_user},
                                                     {&m_passwordLabel, &m_password}})
        addRow(row, m_server);
}

void ConnectDialog::createAdvanced()
{
    add(m_more);
    m_advanced.setParent(&content());
    m_advanced.create();
    add(m_readOnly, m_advanced);
    add(m_verify, m_advanced);
    m_wait.setRange(0, Connection::LongestWait);
    m_wait.setValue(Connection::DefaultWait);
    addRow({&m_waitLabel, &m_wait}, m_advanced);
    addRow({&m_encryptionLabel, &m_encryption}, m_advanced);
    for (size_t i = 0; i < std::size(encryptionTexts); ++i)
        m_encryption.insertLine(L"");
    addRow({&m_parametersLabel, &m_parameters}, m_advanced);
    OviAPI::connect<&OviAPI::WButton::onPush>(m_more, *this, &ConnectDialog::onMorePush);
    OviAPI::connect<&OviAPI::WButton::onPush>(m_advanced.button(), *this,
                                              &ConnectDialog::onHidePush);
}

void ConnectDialog::addRow(const Row& row, OviAPI::Container& parent)
{
    add(*row.label, parent);
    add(*row.field, parent);
    row.label->setBuddy(row.field);
}

std::vector<ConnectDialog::Row> ConnectDialog::advancedRows()
{
    if (isServer())
        return {{&m_encryptionLabel, &m_encryption}, {&m_parametersLabel, &m_parameters}};
    return {{&m_waitLabel, &m_wait}};
}

void ConnectDialog::loadTexts()
{
    setTitle(textOf(TextConnectTitle).c_str());
    m_recentLabel.setText(textOf(TextConnectRecent).c_str());
    m_remove.setText(textOf(TextConnectRemove).c_str());
    m_engineLabel.setText(textOf(TextConnectEngine).c_str());
    m_fileCaption = textOf(TextConnectFile);
    m_file.setText(m_fileCaption.c_str());
    m_pathLabel.setText(textOf(TextConnectPath).c_str());
    m_browse.setText(textOf(TextConnectBrowse).c_str());
    m_serverCaption = textOf(TextConnectServer);
    m_server.setText(m_serverCaption.c_str());
    m_hostLabel.setText(textOf(TextConnectHost).c_str());
    m_portLabel.setText(textOf(TextConnectPort).c_str());
    m_port.setToolTip(textOf(TextConnectPortHint).c_str());
    m_databaseLabel.setText(textOf(TextConnectDatabase).c_str());
    m_userLabel.setText(textOf(TextConnectUser).c_str());
    m_passwordLabel.setText(textOf(TextConnectPassword).c_str());
    m_more.setText(textOf(TextConnectMore).c_str());
    m_advanced.setTitle(textOf(TextConnectAdvanced).c_str());
    m_advanced.button().setAccessibleName(textOf(TextConnectHide).c_str());
    m_advanced.button().setToolTip(textOf(TextConnectHide).c_str());
    m_readOnly.setText(textOf(TextConnectReadOnly).c_str());
    m_verify.setText(textOf(TextConnectVerify).c_str());
    m_waitLabel.setText(textOf(TextConnectWait).c_str());
    m_wait.setSuffix(textOf(TextConnectSeconds).c_str());
    m_encryptionLabel.setText(textOf(TextConnectEncryption).c_str());
    const int encryption = std::max(0, m_encryption.currentLine());
    m_encryption.clear();
    for (const TextId line :
         {TextEncryptionUsual, TextEncryptionNever, TextEncryptionAlways, TextEncryptionChecked})
        m_encryption.insertLine(textOf(line).c_str());
    m_encryption.setCurrentLine(encryption);
    m_parametersLabel.setText(textOf(TextConnectParameters).c_str());
    m_message.setText(L"");
    m_test.setText(textOf(TextConnectTest).c_str());
    m_connect.setText(textOf(TextConnectButton).c_str());
    m_cancel.setText(textOf(TextDialogCancel).c_str());
}

// --- placing them

int ConnectDialog::layout(int width)
{
    int top = layoutRecent(width, Margin) + Gap;
    const bool choice = m_engines.size() > 1;
    m_engineLabel.show(choice);
    m_engine.show(choice);
    if (choice)
        top = layoutRows({{&m_engineLabel, &m_engine}}, Margin, width, top) + Gap;
    top = (isServer() ? layoutServer(width, top) : layoutFile(width, top)) + Gap;
    if (m_advanced.isVisible())
        top = layoutAdvanced(width, top) + Gap;
    if (!m_message.text().empty()) {
        const int lines =
            std::min(wrappedHeight(m_message.text(), width), longestMessage * textHeight());
        m_message.move(Margin, top, width, lines);
        top += lines + Gap;
    } else {
        m_message.move(Margin, top, width, 0);
    }
    top += rowGap;
    m_more.move(Margin, top, buttonWidth(m_more), fieldHeight());
    if (rowWidth({&m_more, &m_test, &m_connect, &m_cancel}) > width)
        top += fieldHeight() + Gap; // two rows of buttons
    return layoutButtons({&m_test, &m_connect, &m_cancel}, width, top);
}

int ConnectDialog::layoutRecent(int width, int top)
{
    const int remove = buttonWidth(m_remove);
    const int label = OviAPI::GetTextSize(font(), m_recentLabel.text()).width;
    const int left = Margin + label + Gap;
    m_recentLabel.move(Margin, top + (fieldHeight() - textHeight()) / 2, label + Gap,
                       textHeight() + 2);
    m_recent.move(left, top, std::max(0, Margin + width - remove - Gap - left), fieldHeight());
    m_remove.move(Margin + width - remove, top, remove, fieldHeight());
    return top + fieldHeight();
}

// Labels in one column as wide as the widest of them, fields in the other. Returns the bottom.
int ConnectDialog::layoutRows(const std::vector<Row>& rows, int left, int width, int top)
{
    int labels = 0;
    for (const Row& row : rows) {
        if (row.label)
            labels = std::max(labels, OviAPI::GetTextSize(font(), row.label->text()).width);
    }
    labels = std::min(labels, width / 2);
    const int room = std::max(0, width - labels - Gap);
    const int down = (fieldHeight() - textHeight()) / 2;
    for (const Row& row : rows) {
        if (row.label) {
            const bool number = dynamic_cast<OviAPI::WSpinBox*>(row.field) != nullptr;
            row.label->move(left, top + down, labels, textHeight() + 2);
            row.field->move(left + labels + Gap, top,
                            number ? std::min(room, scaled(numberWidth)) : room, fieldHeight());
        }
        top += fieldHeight() + rowGap;
    }
    return top - rowGap;
}

// Places a group whose content is inside px high; content begins at the bottom of layoutGroup's
// caption. Returns the bottom of the group.
int ConnectDialog::layoutGroup(GroupBox& box, const std::wstring& caption, int width, int top,
                               int inside)
{
    box.setFont(fittedFont(caption, {captionWidth, textHeight()}));
    const int bottom = top + textHeight() + inside + inner;
    box.move(Margin, top, width, bottom - top);
    return bottom;
}

int ConnectDialog::layoutFile(int width, int top)
{
    const int content = textHeight() + rowGap + fieldHeight();
    const int bottom = layoutGroup(m_file, m_fileCaption, width, top, content);
    const int inside = width - 2 * inner - 2;
    int y = top + textHeight() - m_file.y();
    m_pathLabel.move(inner, y, inside, textHeight() + 2);
    y += textHeight() + rowGap;
    const int browse = buttonWidth(m_browse);
    m_path.move(inner, y, std::max(0, inside - browse - Gap), fieldHeight());
    m_browse.move(inner + inside - browse, y, browse, fieldHeight());
    return bottom;
}

// Two columns: the address on the left, port and password on the right.
int ConnectDialog::layoutServer(int width, int top)
{
    constexpr int rows = 3;
    const int content = rows * (fieldHeight() + rowGap);
    const int bottom = layoutGroup(m_server, m_serverCaption, width, top, content);
    const int first = top + textHeight() + rowGap - m_server.y();
    const int half = (width - 2 * inner - 2 - Gap) / 2;
    layoutRows({{&m_hostLabel, &m_host}, {&m_databaseLabel, &m_database}, {&m_userLabel, &m_user}},
               inner, half, first);
    layoutRows({{&m_portLabel, &m_port}, {}, {&m_passwordLabel, &m_password}}, inner + half + Gap,
               half, first);
    return bottom;
}

int ConnectDialog::layoutAdvanced(int width, int top)
{
    constexpr int titleAbove = 7; // px of the title above the panel
    m_advanced.setFont(fittedFont(m_advanced.title(), {width, titleHeight}));
    const int inside = width - 2 * inner - 2;
    const int box = textHeight() + 4;
    int y = inner + 4;
    m_readOnly.move(inner, y, inside, box);
    y += box + rowGap;
    m_verify.show(!isServer());
    if (!isServer()) {
        m_verify.move(inner, y, inside, box);
        y += box + rowGap;
    }
    m_waitLabel.show(!isServer());
    m_wait.show(!isServer());
    m_encryptionLabel.show(isServer());
    m_encryption.show(isServer());
    m_parametersLabel.show(isServer());
    m_parameters.show(isServer());
    const int bottom = layoutRows(advancedRows(), inner, inside - hideButtonRoom, y) + inner;
    m_advanced.move(Margin, top + titleAbove, width, bottom);
    return top + titleAbove + bottom;
}

// --- what the user does

void ConnectDialog::loadRecent()
{
    m_recent.clear();
    for (const Connection& each : m_options.Connections.all())
        m_recent.insertLine(each.title().c_str());
    const bool any = m_recent.lineCount() > 0;
    m_recent.enable(any);
    m_remove.enable(any);
    m_recent.setCurrentLine(any ? 0 : -1);
}

void ConnectDialog::fill(const Connection& connection)
{
    const auto known = std::find_if(m_engines.begin(), m_engines.end(), [&](const auto& each) {
        return OviAPI::utf8ToWide(each.scheme) == connection.engine;
    });
    m_engine.setCurrentLine(known == m_engines.end() ? 0
                                                     : static_cast<int>(known - m_engines.begin()));
    m_path.setText(connection.path.c_str());
    m_path.setCaretToEnd();
    m_host.setText(connection.host.c_str());
    m_port.setValue(connection.port);
    m_database.setText(connection.database.c_str());
    m_user.setText(connection.user.c_str());
    m_password.setText(L"");
    m_parameters.setText(connection.parameters.c_str());
    m_encryption.setCurrentLine(connection.encryption);
    m_readOnly.setChecked(connection.readOnly);
    m_verify.setChecked(connection.verify);
    m_wait.setValue(connection.lockWait);
    const bool usual = !connection.readOnly && !connection.verify &&
                       connection.lockWait == Connection::DefaultWait &&
                       connection.parameters.empty() &&
                       connection.encryption == Connection::AsUsual;
    if (!usual)
        showAdvanced(true);
    showEngine();
}

void ConnectDialog::showEngine()
{
    m_file.show(!isServer());
    m_server.show(isServer());
    m_message.setText(L"");
    arrange();
}

void ConnectDialog::showAdvanced(bool visible)
{
    m_advanced.show(visible);
}

OviAPI::SlotResult ConnectDialog::onRecent(OviAPI::Object*)
{
    const auto& recent = m_options.Connections.all();
    const int line = m_recent.currentLine();
    if (line >= 0 && static_cast<size_t>(line) < recent.size())
        fill(recent[static_cast<size_t>(line)]);
    return 1;
}

OviAPI::SlotResult ConnectDialog::onRemovePush(OviAPI::Object*)
{
    const int line = m_recent.currentLine();
    if (line < 0 || !confirmRemoval())
        return 1;
    m_options.Connections.remove(static_cast<size_t>(line));
    loadRecent();
    m_recent.setCurrentLine(std::min(line, m_recent.lineCount() - 1));
    if (m_recent.lineCount() > 0)
        m_recent.setFocus();
    else
        focusFault();
    return 1;
}

bool ConnectDialog::confirmRemoval()
{
    if (m_options.RemoveConnection.Value == TypicalConfirm::Yes)
        return true;
    const std::wstring question = textOf(TextConnectRemoveQuestion, m_recent.text());
    YesNoConfirmDlg dialog(0, nullptr, question.c_str());
    dialog.setParent(this);
    dialog.width = 520;
    dialog.noEnabledWhenRemembered = false; // a list from which nothing can be taken helps nobody
    const bool yes = dialog.create() && dialog.execModal() == 1;
    if (yes && dialog.rememberChoice)
        m_options.RemoveConnection.Value = TypicalConfirm::Yes;
    return yes;
}

OviAPI::SlotResult ConnectDialog::onEngine(OviAPI::Object*)
{
    showEngine();
    return 1;
}

OviAPI::SlotResult ConnectDialog::onBrowsePush(OviAPI::Object*)
{
    ExtFileDialog dialog(ExtFileDialog::Open);
    dialog.setTitle(textOf(TextConnectBrowseTitle).c_str());
    dialog.setFilters(textOf(TextConnectBrowseFilters).c_str());
    dialog.setFolder(m_options.LastLoadDirectory.c_str());
    if (!m_path.text().empty())
        dialog.setPath(connection().path.c_str());
    if (dialog.execModal(this)) {
        m_path.setText(dialog.path().c_str());
        m_path.setCaretToEnd();
        m_path.setFocus();
    }
    return 1;
}

OviAPI::SlotResult ConnectDialog::onMorePush(OviAPI::Object*)
{
    const bool visible = !m_advanced.isVisible();
    showAdvanced(visible);
    arrange();
    if (visible)
        m_readOnly.setFocus();
    return 1;
}

OviAPI::SlotResult ConnectDialog::onHidePush(OviAPI::Object*)
{
    m_more.setFocus();
    showAdvanced(false);
    arrange();
    return 1;
}

OviAPI::SlotResult ConnectDialog::onTestPush(OviAPI::Object*)
{
    if (m_opening.isRunning())
        return 1;
    if (const auto session = open())
        say(textOf(TextConnectWorks, groupedNumber(static_cast<long>(session->tables().size()))));
    return 1;
}

OviAPI::SlotResult ConnectDialog::onConnectPush(OviAPI::Object*)
{
    if (m_opening.isRunning())
        return 1;
    m_session = open();
    if (!m_session)
        return 1;
    Connection used = connection();
    if (used.isFile())
        used.path = OviAPI::localeToWide(m_session->path());
    m_options.Connections.add(used);
    closeModal(1);
    return 1;
}

OviAPI::SlotResult ConnectDialog::onCancelPush(OviAPI::Object*)
{
    close();
    return 1;
}

bool ConnectDialog::onClose()
{
    m_opening.giveUp();
    return ExplorerDialog::onClose();
}

// Opens what the controls say; null when that fails, which is said then.
std::unique_ptr<DatabaseSession> ConnectDialog::open()
{
    const Connection asked = connection();
    if (isServer() && asked.host.empty()) {
        say(textOf(TextConnectNoHost));
        focusFault();
        return nullptr;
    }
    std::wstring failure = textOf(TextErrorStopped);
    TextId reason = TextErrorStopped;
    try {
        const auto password = std::make_shared<const Secret>(m_password.text());
        m_again = [asked, password] { return std::make_unique<DatabaseSession>(asked, *password); };
        auto session = m_opening.run(asked.title(), m_again);
        if (session || !isVisible())
            return session;
    } catch (const OpenFailure& x) {
        failure = textOf(x);
        reason = x.reason();
    }
    say(failure);
    focusFault(reason);
    return nullptr;
}

void ConnectDialog::say(const std::wstring& text)
{
    m_message.setText(text.c_str());
    m_message.setToolTip(text.c_str());
    arrange();
    m_message.repaint();
}

// The field that the failure is about.
void ConnectDialog::focusFault(TextId reason)
{
    OviAPI::WLineEdit* field = reason == TextErrorLongUser       ? &m_user
                               : reason == TextErrorLongPassword ? &m_password
                                                                 : nullptr;
    if (!field)
        return focusFault();
    field->select(0, -1);
    field->setFocus();
}

// Where a mistake is most likely.
void ConnectDialog::focusFault()
{
    OviAPI::WLineEdit& line = isServer() ? m_host : m_path;
    line.select(0, -1);
    line.setFocus();
}
