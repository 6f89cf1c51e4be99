// A query in the toolkit's own query model, for client_bench.
//
//     peer_qt_query DRIVER DATABASE SQL
//
// Prints the milliseconds from the query until every row was fetched and every cell asked for, and
// the memory in MiB above what the process had before.
#include <chrono>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>

#include <QCoreApplication>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQueryModel>
#include <QVariant>

namespace {

double peakMiB()
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("VmHWM:"))
            return std::atof(line.c_str() + 6) / 1024;
    }
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    if (argc != 4)
        return 2;
    QSqlDatabase db = QSqlDatabase::addDatabase(argv[1]);
    if (std::strcmp(argv[1], "QSQLITE") == 0)
        db.setDatabaseName(argv[2]);
    else
        db.setConnectOptions(argv[2]);
    if (!db.open()) {
        std::fprintf(stderr, "%s\n", qPrintable(db.lastError().text()));
        return 2;
    }
    const double before = peakMiB();
    const auto start = std::chrono::steady_clock::now();
    QSqlQueryModel model;
    model.setQuery(argv[3], db);
    while (model.canFetchMore())
        model.fetchMore();
    qint64 cells = 0;
    const int rows = model.rowCount();
    const int columns = model.columnCount();
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < columns; ++column)
            cells += model.data(model.index(row, column)).isNull() ? 0 : 1;
    }
    const std::chrono::duration<double, std::milli> took = std::chrono::steady_clock::now() - start;
    if (model.lastError().isValid() || cells == 0)
        return 2;
    std::printf("%.3f %.3f\n", took.count(), peakMiB() - before);
    return 0;
}
