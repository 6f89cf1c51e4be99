// What the user can ask the explorer to do.
#pragma once

enum class Command {
    None,
    Open,
    Connect,
    Sample,
    Close,
    Exit,
    Refresh,
    FitColumns,
    GoToRow,
    NextPane,
    PreviousPane,
    English,
    Russian,
    SwitchLanguage,
    Larger,
    Smaller,
    NormalSize,
    Settings,
    ControlsLarger,
    ControlsSmaller,
    TablesLarger,
    TablesSmaller,
    Keys,
    About,
};
