#error "libpq may be included under platform/dorcpp/postgresql only: use the interface of the platform instead."
