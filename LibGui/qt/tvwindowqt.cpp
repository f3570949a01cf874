#include "LibGui/qt/tvwindowqt.h"

#include <QAction>
#include <QComboBox>
#include <QCoreApplication>
#include <QGuiApplication>
#include <QHeaderView>
#include <QPixmap>
#include <QScreen>
#include <QSplitter>
#include <QTabWidget>
#include <QTableView>
#include <QTreeView>
#include <QVariant>
#include <QWidget>
#include <algorithm>
#include <vector>

#include "LibCore/error/tverror.h"
#include "LibCore/param/tvparam.h"
#include "LibCore/ptrarray/tvidstring.h"
#include "LibCore/textstr/tvtextstr.h"
#include "LibGui/qt/tvdialogqt.h"
#include "LibGui/qt/tvmainwindowqt.h"

const char* const TVWindowQt::C_KeyX = ".x";
const char* const TVWindowQt::C_KeyY = ".y";
const char* const TVWindowQt::C_KeyWidth = ".width";
const char* const TVWindowQt::C_KeyHeight = ".height";
const char* const TVWindowQt::C_KeyMax = ".max";
const char* const TVWindowQt::C_KeySplitter = ".splitter";
const char* const TVWindowQt::C_KeySelectedTab = ".selectedTab";
const char* const TVWindowQt::C_KeyColumns = ".columns";

namespace {

// The tool tip a control had before disable_control replaced it.
const char* const C_SavedTip = "tvSavedToolTip";

int read_int(const std::string& key, int fallback)
{
    const std::string text = tvparam()->get_system_value(key);
    if (text.empty())
        return fallback;
    try {
        return std::stoi(text);
    } catch (const std::exception&) {
        return fallback;
    }
}

// "10,20,30" as integers; a part that isn't a number ends the list.
std::vector<int> read_ints(const std::string& key)
{
    std::vector<int> values;
    for (const std::string& part : tv_tokenise(tvparam()->get_system_value(key), ',')) {
        try {
            values.push_back(std::stoi(part));
        } catch (const std::exception&) {
            break;
        }
    }
    return values;
}

std::string join_ints(const std::vector<int>& values)
{
    std::string text;
    for (size_t i = 0; i < values.size(); ++i) {
        if (i > 0)
            text += ",";
        text += std::to_string(values[i]);
    }
    return text;
}

int store(const std::string& key, const std::string& value)
{
    TV_PASS_ON(tvparam()->set_system_value(key, value));
    return TVErrC_ok;
}

int store_header(const QWidget& view, const QHeaderView* header)
{
    std::vector<int> widths;
    for (int i = 0; i < header->count(); ++i)
        widths.push_back(header->sectionSize(i));
    return store(TVWindowQt::widget_key(view, TVWindowQt::C_KeyColumns), join_ints(widths));
}

void restore_header(const QWidget& view, QHeaderView* header)
{
    const std::vector<int> widths = read_ints(TVWindowQt::widget_key(view, TVWindowQt::C_KeyColumns));
    for (int i = 0; i < static_cast<int>(widths.size()) && i < header->count(); ++i)
        header->resizeSection(i, widths[static_cast<size_t>(i)]);
}

template <class T>
T* nearest(QWidget* widget)
{
    for (QWidget* w = widget; w != nullptr; w = w->parentWidget()) {
        if (auto* found = dynamic_cast<T*>(w))
            return found;
    }
    return nullptr;
}

} // namespace

void TVWindowQt::set_background_image(QWidget* widget, const std::string& image)
{
    if (widget == nullptr)
        return;
    QPalette palette = widget->palette();
    if (image.empty()) {
        palette.setBrush(QPalette::Window, QGuiApplication::palette().brush(QPalette::Window));
    } else {
        const QPixmap pixmap(QString::fromStdString(image));
        palette.setBrush(QPalette::Window,
                         QBrush(pixmap.scaled(widget->size(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation)));
    }
    widget->setAutoFillBackground(true);
    widget->setPalette(palette);
}

void TVWindowQt::set_background_colour(QWidget* widget, const std::string& colour)
{
    if (widget == nullptr)
        return;
    QPalette palette = widget->palette();
    palette.setBrush(QPalette::Window, colour.empty() ? QGuiApplication::palette().brush(QPalette::Window)
                                                      : QBrush(QColor(QString::fromStdString(colour))));
    widget->setAutoFillBackground(true);
    widget->setPalette(palette);
}

void TVWindowQt::set_widget_theme(QWidget* widget, const std::string& foreground, const std::string& background)
{
    if (widget == nullptr)
        return;
    QPalette palette = widget->palette();
    if (!foreground.empty()) {
        const QColor colour(QString::fromStdString(foreground));
        palette.setColor(QPalette::WindowText, colour);
        palette.setColor(QPalette::Text, colour);
        palette.setColor(QPalette::ButtonText, colour);
    }
    if (!background.empty()) {
        const QColor colour(QString::fromStdString(background));
        palette.setColor(QPalette::Window, colour);
        palette.setColor(QPalette::Base, colour);
        widget->setAutoFillBackground(true);
    }
    widget->setPalette(palette);
}

TVWindowQt* TVWindowQt::parent_window(QWidget* widget) { return nearest<TVWindowQt>(widget); }
TVDialogQt* TVWindowQt::parent_dialog(QWidget* widget) { return nearest<TVDialogQt>(widget); }
TVMainWindowQt* TVWindowQt::parent_main_window(QWidget* widget) { return nearest<TVMainWindowQt>(widget); }

std::string TVWindowQt::widget_key(const QWidget& widget, const std::string& suffix)
{
    const QWidget* window = widget.window();
    if (window == &widget)
        return widget.objectName().toStdString() + suffix;
    return window->objectName().toStdString() + "." + widget.objectName().toStdString() + suffix;
}

int TVWindowQt::store_geometry(const QWidget& window)
{
    // pos() is the frame's corner and size() the inside, which is what
    // move() and resize() take back, so a round trip doesn't grow.
    const bool max = (window.windowState() & Qt::WindowMaximized) != 0;
    TV_PASS_ON(store(widget_key(window, C_KeyMax), max ? "1" : "0"));
    if (max)
        return TVErrC_ok; // keep the size to come back to
    TV_PASS_ON(store(widget_key(window, C_KeyX), std::to_string(window.pos().x())));
    TV_PASS_ON(store(widget_key(window, C_KeyY), std::to_string(window.pos().y())));
    TV_PASS_ON(store(widget_key(window, C_KeyWidth), std::to_string(window.width())));
    TV_PASS_ON(store(widget_key(window, C_KeyHeight), std::to_string(window.height())));
    return TVErrC_ok;
}

void TVWindowQt::restore_geometry(QWidget& window)
{
    int x = read_int(widget_key(window, C_KeyX), -1);
    int y = read_int(widget_key(window, C_KeyY), -1);
    const int width = read_int(widget_key(window, C_KeyWidth), -1);
    const int height = read_int(widget_key(window, C_KeyHeight), -1);
    if (read_int(widget_key(window, C_KeyMax), -1) == 1) {
        window.setWindowState(window.windowState() | Qt::WindowMaximized);
        return;
    }
    if (width < 0 || height < 0)
        return;
    QScreen* screen = window.screen();
    if (screen == nullptr)
        screen = QGuiApplication::primaryScreen();
    if (screen == nullptr)
        return;
    // After a change of display a stored window may lie off the screen.
    const QRect available = screen->availableGeometry();
    if (x < 0 || x + width > available.width())
        x = 0;
    if (y < 0 || y + height > available.height())
        y = 0;
    window.resize(std::min(width, available.width()), std::min(height, available.height()));
    window.move(x, y);
}

int TVWindowQt::store_splitter(const QSplitter& splitter)
{
    const QList<int> sizes = splitter.sizes();
    return store(widget_key(splitter, C_KeySplitter), join_ints(std::vector<int>(sizes.begin(), sizes.end())));
}

void TVWindowQt::restore_splitter(QSplitter& splitter)
{
    const std::vector<int> sizes = read_ints(widget_key(splitter, C_KeySplitter));
    if (sizes.empty())
        return;
    QList<int> list;
    for (int size : sizes)
        list.append(size);
    splitter.setSizes(list);
}

int TVWindowQt::store_selected_tab(const QTabWidget& tabs)
{
    return store(widget_key(tabs, C_KeySelectedTab), std::to_string(tabs.currentIndex()));
}

void TVWindowQt::restore_selected_tab(QTabWidget& tabs)
{
    const int index = read_int(widget_key(tabs, C_KeySelectedTab), -1);
    if (index >= 0 && index < tabs.count())
        tabs.setCurrentIndex(index);
}

int TVWindowQt::store_columns(const QTreeView& tree) { return store_header(tree, tree.header()); }
void TVWindowQt::restore_columns(QTreeView& tree) { restore_header(tree, tree.header()); }
int TVWindowQt::store_columns(const QTableView& table) { return store_header(table, table.horizontalHeader()); }
void TVWindowQt::restore_columns(QTableView& table) { restore_header(table, table.horizontalHeader()); }

void TVWindowQt::load_combo(QComboBox* combo, const TVIdString& rows, int select)
{
    if (combo == nullptr)
        return;
    const QSignalBlocker quiet(combo); // the caller reacts to the final choice only
    combo->clear();
    for (const TVIdEntry& row : rows)
        combo->addItem(QString::fromStdString(row.get_text()), QString::fromStdString(row.get_id().to_string()));
    combo->setCurrentIndex(select >= 0 && select < combo->count() ? select : -1);
}

std::string TVWindowQt::combo_id(const QComboBox* combo)
{
    if (combo == nullptr || combo->currentIndex() < 0)
        return std::string();
    return combo->currentData().toString().toStdString();
}

void TVWindowQt::set_action_enabled(QAction* action, bool enabled, const std::string& tip)
{
    if (action == nullptr)
        return;
    action->setEnabled(enabled);
    if (!tip.empty())
        action->setToolTip(QString::fromStdString(tip));
}

void TVWindowQt::disable_control(QWidget* widget, const std::string& reason)
{
    if (widget == nullptr)
        return;
    if (!widget->property(C_SavedTip).isValid())
        widget->setProperty(C_SavedTip, widget->toolTip());
    if (!reason.empty())
        widget->setToolTip(QString::fromStdString(reason));
    widget->setEnabled(false);
}

void TVWindowQt::enable_control(QWidget* widget)
{
    if (widget == nullptr)
        return;
    const QVariant saved = widget->property(C_SavedTip);
    if (saved.isValid()) {
        widget->setToolTip(saved.toString());
        widget->setProperty(C_SavedTip, QVariant());
    }
    widget->setEnabled(true);
}

int TVWindowQt::on_error(int value)
{
    const int result = value < 0 ? tverrorvalue() : value;
    get_tverror()->clear_all();
    QCoreApplication::exit(result);
    return result;
}
