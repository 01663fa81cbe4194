#include <host/window/Library.h>

#include <exception>
#include <utility>

#include <host/FileBytes.h>
#include <host/HostError.h>
#include <host/PictureFacts.h>
#include <host/window/LibraryParts.h>

namespace HynHost
{
Library::Parts::Parts(Halyon::CHynThreadManager& manager, std::string file, LibraryListener& listener)
    : m_listener(listener), m_catalog(std::move(file)), m_main(manager),
      m_trash(m_catalog, [this](const std::string& message) { Fail(message); }),
      m_writer(manager, "writer", [this] { EndWriter(); }), m_edits(m_writer), m_reader(manager, "reader"),
      m_thumbnails(manager, m_catalog, ThumbnailResults()), m_import(manager, m_catalog, m_writer, ImportResults())
{
    PreparePictureReading();
    m_isWhole.store(true);
}

// Last on the writer.
void Library::Parts::EndWriter() noexcept
{
    if (!m_isWhole.load())
        return;
    m_import.Finish();
    m_edits.Finish();
}

ThumbnailFinder::Results Library::Parts::ThumbnailResults()
{
    return {
        [this](long long id, const QImage& image, const QImage& shaped)
        { m_main.Post([this, id, image, shaped] { m_listener.OnThumbnail(id, image, shaped); }); },
        [this](MadeThumbnail made) { StoreLater(std::move(made)); },
        [this](const std::string& message) { Fail(message); },
    };
}

Library::Parts::~Parts()
{
    m_catalog.Stop();
    m_thumbnails.Stop();
    m_reader.Stop();
    m_import.StopCounting();
    m_writer.Stop();
}

// Changes the catalogue as soon as nobody else holds its lock.
template <class Work>
void Library::Parts::Edit(Work work)
{
    m_edits.Post(
        [this, work = std::move(work)]
        {
            try
            {
                if (m_catalog.IsOpen())
                    work();
            }
            catch (const std::exception& failure)
            {
                Fail(failure.what());
            }
        });
}

void Library::Parts::Fail(const std::string& message)
{
    m_main.Post([this, message] { m_listener.OnFailure(message); });
}

void Library::Parts::Break(const std::string& message)
{
    m_main.Post([this, message] { m_listener.OnBroken(message); });
}

void Library::Parts::Open()
{
    m_writer.Post(
        [this]
        {
            try
            {
                const bool exists = m_catalog.Open(Catalog::Mode::Existing);
                m_main.Post([this, exists] { m_listener.OnOpened(exists); });
                if (exists)
                    Refresh();
            }
            catch (const Stopped&)
            {
            }
            catch (const std::exception& failure)
            {
                Break(failure.what());
            }
        });
}

void Library::Parts::Search(const MediaQuery& query)
{
    {
        const Halyon::TovMutexLock lock(m_mutex);
        m_query = query;
    }
    Refresh();
}

void Library::Parts::Refresh()
{
    {
        const Halyon::TovMutexLock lock(m_mutex);
        if (m_isSearching || !m_catalog.IsOpen())
            return;
        m_isSearching = true;
    }
    m_reader.Post([this] { Find(); });
}

void Library::Parts::Find()
{
    MediaQuery query;
    {
        const Halyon::TovMutexLock lock(m_mutex);
        m_isSearching = false; // what changes from now on is searched for again
        query = m_query;
    }
    try
    {
        FoundMedia found = m_catalog.Read("cannot search the catalogue",
                                          [&](Database& database) { return FindMedia(database, query); });
        m_main.Post(
            [this, query, found = std::move(found)]
            {
                if (IsWanted(query))
                    m_listener.OnIndex(found.index, found.all);
            });
    }
    catch (const Stopped&)
    {
    }
    catch (const std::exception& failure)
    {
        Break(failure.what());
    }
}

// Another one that was asked for meanwhile is on its way.
bool Library::Parts::IsWanted(const MediaQuery& query)
{
    const Halyon::TovMutexLock lock(m_mutex);
    return query == m_query;
}

void Library::Parts::WantDetails(long long id)
{
    m_wantedDetails.store(id);
    m_reader.Post(
        [this, id]
        {
            try
            {
                FindDetails(id);
            }
            catch (const Stopped&)
            {
            }
            catch (const std::exception& failure)
            {
                Fail(failure.what());
            }
        });
}

void Library::Parts::FindDetails(long long id)
{
    if (m_wantedDetails.load() != id || !m_catalog.IsOpen())
        return;
    const auto places = m_catalog.Places();
    auto details = m_catalog.Read("cannot read the catalogue",
                                  [&](Database& database) { return ReadDetails(database, *places, id); });
    if (!details)
        return;
    FileBytes file;
    details->isThere = file.Open(details->path) == 0;
    if (const auto kind = MediaKindFromName(details->kind); details->isThere && kind && IsPicture(*kind))
        details->camera = ReadCamera(file.Bytes());
    m_main.Post([this, details = std::move(*details)] { m_listener.OnDetails(details); });
}

// Those that are made while others are written are written together.
void Library::Parts::StoreLater(MadeThumbnail made)
{
    {
        const Halyon::TovMutexLock lock(m_mutex);
        m_made.push_back(std::move(made));
        if (m_made.size() > 1)
            return;
    }
    Edit([this] { StoreMade(); });
}

void Library::Parts::StoreMade()
{
    try
    {
        m_catalog.Write("cannot store thumbnails in",
                        [this](Database& database)
                        {
                            std::vector<MadeThumbnail> made;
                            {
                                const Halyon::TovMutexLock lock(m_mutex);
                                made.swap(m_made);
                            }
                            StoreThumbnails(database, made);
                        });
    }
    catch (const HostError& failure)
    {
        if (!std::exchange(m_toldOfStoring, true)) // once: it would fail for each picture
            Fail(failure.what());
    }
}

// What is given in the window stands beside what the file says.
void Library::Parts::Rate(std::vector<long long> ids, int stars)
{
    Edit(
        [this, ids = std::move(ids), stars]
        {
            m_catalog.Write("cannot give stars in",
                            [&](Database& database)
                            {
                                Command give = database.prepare(u"UPDATE file SET given = ?2 WHERE id = ?1");
                                for (const long long id : ids)
                                    give.execute(id, stars);
                            });
            Refresh();
        });
}

void Library::Parts::MoveToTrash(std::vector<long long> ids)
{
    Edit([this, ids = std::move(ids)] { TellOfTrash(m_trash.Take(ids), &LibraryListener::OnTrashed); });
}

void Library::Parts::UndoTrash()
{
    Edit([this] { TellOfTrash(m_trash.BringBack(), &LibraryListener::OnRestored); });
}

void Library::Parts::TellOfTrash(std::size_t count, void (LibraryListener::*tell)(std::size_t count))
{
    if (count != 0)
        Refresh();
    m_main.Post(
        [this, count, tell, levels = m_trash.Levels()]
        {
            m_undoLevels = levels;
            if (count != 0)
                (m_listener.*tell)(count);
        });
}

void Library::Parts::StartImport(const std::string& folder)
{
    if (m_isImporting)
    {
        m_main.Post(
            [this, folder]
            {
                m_listener.OnImportRefused(
                    folder, HostError("cannot import the folder", folder, "another import is running").what());
            });
        return;
    }
    m_isImporting = true;
    m_import.Start(folder);
}

void Library::Parts::CancelImport()
{
    if (m_isImporting)
        m_import.Cancel();
}

LibraryImport::Results Library::Parts::ImportResults()
{
    return {
        [this](const std::string& folder, const std::string& reason)
        {
            m_main.Post(
                [this, folder, reason]
                {
                    m_isImporting = false;
                    m_listener.OnImportRefused(folder, reason);
                });
        },
        [this](const ImportState& state) { m_main.Post([this, state] { m_listener.OnImportProgress(state); }); },
        [this](const ImportReport& report, const std::string& failure)
        {
            m_main.Post(
                [this, report, failure]
                {
                    m_isImporting = false;
                    m_listener.OnImportEnded(report, failure);
                });
        },
        [this] { Refresh(); },
        [this](std::function<void()> edit) { m_edits.Post(std::move(edit)); },
        [this](const std::string& message) { Fail(message); },
    };
}

Library::Library(Halyon::CHynThreadManager& manager, std::string catalogFile, LibraryListener& listener)
    : m_parts(std::make_unique<Parts>(manager, std::move(catalogFile), listener))
{
}

Library::~Library() = default;

void Library::Open()
{
    m_parts->Open();
}

void Library::Search(const MediaQuery& query)
{
    m_parts->Search(query);
}

void Library::WantThumbnails(std::vector<long long> ids, ThumbnailShape shape)
{
    m_parts->WantThumbnails(std::move(ids), std::move(shape));
}

void Library::WantDetails(long long id)
{
    m_parts->WantDetails(id);
}

void Library::Rate(std::vector<long long> ids, int stars)
{
    m_parts->Rate(std::move(ids), stars);
}

void Library::MoveToTrash(std::vector<long long> ids)
{
    m_parts->MoveToTrash(std::move(ids));
}

void Library::UndoTrash()
{
    m_parts->UndoTrash();
}

bool Library::CanUndoTrash() const noexcept
{
    return m_parts->CanUndoTrash();
}

void Library::StartImport(const std::string& folder)
{
    m_parts->StartImport(folder);
}

void Library::CancelImport()
{
    m_parts->CancelImport();
}

bool Library::IsImporting() const noexcept
{
    return m_parts->IsImporting();
}
} // namespace HynHost
