// What the user can ask the explorer to do.
#pragma once

enum class Command {
    None,
    Open,
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
    ControlsLarger,
    ControlsSmaller,
    TablesLarger,
    TablesSmaller,
    Keys,
    About,
};
