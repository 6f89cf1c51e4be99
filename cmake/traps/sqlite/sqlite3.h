#error "SQLite may be included under platform/dorcpp/sqlite only: use the interface of the platform instead."
