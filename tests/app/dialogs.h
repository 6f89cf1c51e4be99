// Finds the parts of a dialog and answers the next one.
#pragma once

#include <functional>
#include <string_view>

#include <oviapi/button.h>
#include <oviapi/checkbox.h>
#include <oviapi/static.h>

#include "app/yesnoconfirmdlg.h"
#include "tests/support/uidriver.h"

// The child of that type and text; null when there is none.
template<class Control>
Control* childWithText(OviAPI::Container& container, std::wstring_view text)
{
    for (OviAPI::VisualObject* child = container.firstChild(); child;
         child = child->nextSibling()) {
        auto* control = dynamic_cast<Control*>(child);
        if (control && control->text() == text)
            return control;
    }
    return nullptr;
}

// Runs the function with the next confirmation dialog, from its event loop. The count goes up then.
inline void answerConfirmation(int& asked, std::function<void(YesNoConfirmDlg&)> answer)
{
    UiDriver::later([&asked, answer = std::move(answer)] {
        auto* dialog = dynamic_cast<YesNoConfirmDlg*>(OviAPI::WForm::topModal());
        if (!dialog)
            return;
        ++asked;
        answer(*dialog);
    });
}
