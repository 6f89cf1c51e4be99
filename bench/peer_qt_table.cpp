// The same table in the toolkit's own table model and view, for table_open_bench.
//
//     peer_qt_table first|last PATH
//
// Prints milliseconds and the peak memory in MiB: from the query to the first painted page (first),
// and until all rows are known and the last one is painted (last).
#include <chrono>
#include <cstdio>
#include <cstring>

#include <QApplication>
#include <QScrollBar>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlTableModel>
#include <QTableView>
#include <sys/resource.h>

namespace {

double now()
{
    const auto time = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double, std::milli>(time).count();
}

class View : public QTableView {
public:
    void waitForPaint()
    {
        const int before = m_paints;
        while (m_paints == before)
            QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }

protected:
    void paintEvent(QPaintEvent* event) override
    {
        QTableView::paintEvent(event);
        ++m_paints;
    }

private:
    int m_paints = 0;
};

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    if (argc != 3)
        return 2;
    QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE");
    db.setDatabaseName(argv[2]);
    if (!db.open()) {
        fprintf(stderr, "%s\n", qPrintable(db.lastError().text()));
        return 2;
    }
    View view;
    view.resize(1000, 600);
    view.show();
    view.waitForPaint();

    const double start = now();
    QSqlTableModel model(nullptr, db);
    model.setTable("item");
    model.select();
    view.setModel(&model);
    view.waitForPaint();
    if (std::strcmp(argv[1], "last") == 0) {
        while (model.canFetchMore())
            model.fetchMore();
        view.scrollToBottom();
        view.waitForPaint();
    }
    const double end = now();

    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    printf("%.3f %.3f\n", end - start, static_cast<double>(usage.ru_maxrss) / 1024);
    return 0;
}
