// What the tests of the organiser's library share: a listener that remembers, and the main loop turned by hand until
// something has come true.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <QImage>

#include <host/window/Library.h>
#include <tests/support/Environment.h>
#include <tests/system/HostTest.h>

namespace HalyonTest
{
class Recorder : public HynHost::LibraryListener
{
public:
    void OnOpened(bool exists) override { opened.push_back(exists); }
    void OnBroken(const std::string& message) override { broken.push_back(message); }
    void OnIndex(std::shared_ptr<const HynHost::MediaIndex> found, std::size_t count) override
    {
        index = std::move(found);
        all = count;
        ++indexes;
    }
    void OnThumbnail(long long id, const QImage& image, const QImage& /*shaped*/) override
    {
        thumbnails[id].push_back(image);
    }
    void OnDetails(const HynHost::MediaDetails& found) override { details.push_back(found); }
    void OnFailure(const std::string& message) override { failures.push_back(message); }
    void OnTrashed(std::size_t count) override { trashed.push_back(count); }
    void OnRestored(std::size_t count) override { restored.push_back(count); }
    void OnImportRefused(const std::string& /*folder*/, const std::string& reason) override
    {
        refused.push_back(reason);
    }
    void OnImportProgress(const HynHost::ImportState& state) override
    {
        progress.push_back(state);
        if (onProgress)
            onProgress();
    }
    void OnImportEnded(const HynHost::ImportReport& report, const std::string& failure) override
    {
        ended.push_back(report);
        endFailures.push_back(failure);
        indexesAtEnd = indexes;
    }

    std::vector<bool> opened;
    std::vector<std::string> broken;
    std::shared_ptr<const HynHost::MediaIndex> index;
    std::size_t all = 0;
    int indexes = 0;
    std::map<long long, std::vector<QImage>> thumbnails;
    std::vector<HynHost::MediaDetails> details;
    std::vector<std::string> failures;
    std::vector<std::size_t> trashed;
    std::vector<std::size_t> restored;
    std::vector<std::string> refused;
    std::vector<HynHost::ImportState> progress;
    std::function<void()> onProgress;
    std::vector<HynHost::ImportReport> ended;
    std::vector<std::string> endFailures;
    int indexesAtEnd = 0;
};

class LibraryFixture : public HostTest
{
protected:
    LibraryFixture();
    ~LibraryFixture() override;

    // Opens the library on the catalogue of the test's folder, and waits until it is open.
    void OpenLibrary();
    // Takes it away, as the end of the program does, and what it told.
    void CloseLibrary();

    // Turns the main loop until `isTrue`; throws when that takes too long.
    void Until(const char* what, const std::function<bool()>& isTrue);
    // Until the search answers after `action`.
    void UntilIndexAfter(const std::function<void()>& action);

    // Imports to the end, and until the search has answered after it.
    HynHost::ImportReport RunImport(const std::filesystem::path& folder);

    [[nodiscard]] std::string NameOf(long long id);
    [[nodiscard]] long long IdOf(const std::string& name);

    Environment m_environment;
    Halyon::CHynAutoPtr<Halyon::CHynThreadManager> m_spManager;
    Recorder m_told;
    std::unique_ptr<HynHost::Library> m_library;
};
} // namespace HalyonTest
