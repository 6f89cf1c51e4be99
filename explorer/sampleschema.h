// The tables, indexes and views of the sample database.
#pragma once

#include <span>

// Statements that make the tables, to be executed in order in an empty database.
std::span<const char* const> sampleTables();
// Statements that make indexes and views over the filled tables.
std::span<const char* const> sampleIndexesAndViews();
