#error "Expat may be included under platform/xmlutils/expat only: use the interface of the platform instead."
