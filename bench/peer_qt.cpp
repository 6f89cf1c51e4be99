#include "scroll_peer.h"

#include <cstdio>
#include <cstdlib>

#include <QApplication>
#include <QHeaderView>
#include <QScrollBar>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlTableModel>
#include <QTableView>
#include <QTemporaryDir>

namespace {

void require(bool done, const QSqlQuery& query)
{
    if (done)
        return;
    std::fprintf(stderr, "%s\n", qPrintable(query.lastError().text()));
    std::exit(1);
}

void fill(QSqlDatabase& database, long rows)
{
    QSqlQuery query(database);
    require(query.exec("CREATE TABLE goods (id INTEGER PRIMARY KEY, name TEXT, price REAL, "
                       "stock INTEGER, made TEXT, code TEXT, note TEXT, weight REAL)"),
            query);
    database.transaction();
    query.prepare("INSERT INTO goods VALUES (?, ?, ?, ?, ?, ?, ?, ?)");
    for (long i = 1; i <= rows; ++i) {
        const auto n = static_cast<qlonglong>(i);
        query.bindValue(0, n);
        query.bindValue(1, QStringLiteral("Article %1").arg(n * 7919 % 100'003));
        query.bindValue(2, static_cast<double>(n * 37 % 10'000) / 100);
        query.bindValue(3, n * 13 % 1'000);
        query.bindValue(4,
                        QStringLiteral("2024-%1-17 10:30:00").arg(n % 12 + 1, 2, 10, QChar('0')));
        query.bindValue(5, QStringLiteral("C-%1").arg(n * 31 % 65'536, 5, 16, QChar('0')));
        query.bindValue(6, QStringLiteral("kept in hall %1").arg(n % 40));
        query.bindValue(7, static_cast<double>(n * 17 % 5'000) / 8);
        require(query.exec(), query);
    }
    database.commit();
}

} // namespace

ScrollTimes measurePeer(const ScrollTable& table)
{
    const QTemporaryDir folder;
    ScrollTimes times;
    {
        QSqlDatabase database = QSqlDatabase::addDatabase("QSQLITE");
        database.setDatabaseName(folder.filePath("goods.db"));
        if (!database.open()) {
            std::fprintf(stderr, "%s\n", qPrintable(database.lastError().text()));
            std::exit(1);
        }
        fill(database, table.rows);
        QSqlTableModel model(nullptr, database);
        model.setTable("goods");
        model.select();
        while (model.canFetchMore())
            model.fetchMore();
        QTableView view;
        view.setFont(QFont(QString::fromWCharArray(table.font), table.fontSize));
        view.setModel(&model);
        view.verticalHeader()->setDefaultSectionSize(table.rowHeight);
        view.horizontalHeader()->setDefaultSectionSize(table.columnWidth);
        view.resize(table.width, table.height);
        view.show();
        QApplication::processEvents();
        QScrollBar* bar = view.verticalScrollBar();
        const int page = bar->pageStep();
        times.page = medianCpuMs(table.steps, [&] {
            bar->setValue(bar->value() + page);
            QApplication::processEvents();
        });
        bar->setValue(1000);
        QApplication::processEvents();
        times.row = medianCpuMs(table.steps, [&] {
            bar->setValue(bar->value() + 1);
            QApplication::processEvents();
        });
    }
    QSqlDatabase::removeDatabase(QLatin1String(QSqlDatabase::defaultConnection));
    return times;
}
