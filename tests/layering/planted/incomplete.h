#pragma once

inline std::string name();
