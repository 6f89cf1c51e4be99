// The application object of the library.
#pragma once

#include <cstdint>
#include <memory>

#include <oviapi/application.h>
#include <oviapi/font.h>
#include <oviapi/picture.h>
#include <oviapi/resourcemanager.h>
#include <xmlutils/element.h>

#include "app/defaultconfig.h"
#include "app/export.h"
#include "app/typicaloptions.h"

// An application derives one class from this one and makes exactly one instance. It starts and
// stops the program in a fixed order, keeps the user's options in "options.dat", adapts them to the
// screen from "gui_default_settings.xml" and serves the strings of "typical.rrs", both beside the
// executable, as well as the fonts by role.
//
// Owns the resource manager; the options record belongs to the derived class and must be valid from
// loadOptions until saveOptions. User-interface thread only.
class OVIEXT_API ExtApp : public OviAPI::Application {
public:
    ExtApp();
    ~ExtApp() override;

    // parseParameters, initBeforeOptions, loadOptions, initResourceManager, adaptToTD,
    // initAfterOptions. False when one of them threw LException, which has been shown then.
    bool initApplication(int argc, wchar_t** argv) override;
    // saveOptions, then deInitAfterOptions; an LException is shown and not passed on.
    void deInitApplication() override;
    void onResolutionChanged() override;
    // 1 controls, 2 edit fields, 3 trees; null for every other role and without options.
    OviAPI::Font* fontForRole(int role) override;
    // Strings 50001 to 59999 and 60001 to 69999; false for every other id, with buf as it was.
    // size: room in characters. lang: resource language, -1 for the current one.
    bool loadRRSString(int id, wchar_t* buf, int size, int lang) override;
    bool loadRRSPicture(int id, OviAPI::Picture* pic, int lang) override;
    bool loadRRSBitmap(int id, OviAPI::Bitmap* bmp, int lang) override;

    // The application's own first and last steps.
    virtual void initBeforeOptions() = 0;
    virtual void deInitAfterOptions() = 0;
    virtual void parseParameters(int argc, wchar_t** argv);
    // The options record, or null before it is made.
    virtual TypicalOptions* options() = 0;
    // A missing or bad file gives the default options. Throws LException without a record.
    virtual void loadOptions();
    // A file that cannot be written is reported to the user. Throws LException without a record.
    virtual void saveOptions();
    // Takes default settings for this screen where they fit it better than the options do; the user
    // is asked first when the options are his own. True when the options were changed.
    virtual bool adaptToTD();
    virtual void optionsAdaptedToTD();
    // Throws LException when "typical.rrs" is missing or bad.
    virtual void initResourceManager();
    virtual void initAfterOptions() = 0;
    // Switches resources and the platform's phrases; notifyCharsetChanged then switches what is
    // shown.
    virtual void setLanguage(enum TypicalOptions::Language lang);

    // The resource language of an options language.
    int getRRSLang(enum TypicalOptions::Language lang) const;
    // The language that the user's locale implies.
    static enum TypicalOptions::Language getDefaultLang();

    // Message boxes from resource strings; without its strings no box is shown.
    void showTypicalError(int textId);
    // True for yes.
    bool requestConfirm(int textId);
    // Asks whether to save changes to the thing named; true for yes.
    bool askToSave(const wchar_t* name);
    // Whether to adapt the options to this screen; asks the user once in a run at most.
    bool confirmAdaptToTD();

    // The default settings that fit this screen best, or null.
    std::unique_ptr<DefaultConfigSection> searchDefaultConfigSection();
    // Reads an XML file into root and gives root's child of that name and the file's encoding; null
    // when there is no such file or child or it is not XML.
    XMLUtils::XMLElementA* getXMLElement(const wchar_t* path, XMLUtils::XMLEncoding& enc,
                                         XMLUtils::XMLElementA& root, const char* name);

    // The resources of "typical.rrs"; null until initResourceManager has succeeded.
    OviAPI::ResourceManager* resources() const { return resourceManager.get(); }

protected:
    std::unique_ptr<OviAPI::ResourceManager> resourceManager;
    int32_t adaptDecision = TypicalConfirm::Ask; // for this run, coded as the confirmation
    bool freshOptions = true;                    // the options did not come from "options.dat"
};
