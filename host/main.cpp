// `hynhost`, the sample host. Each subcommand stands in a file of its own and adds itself to the command line.
//
// Exit status: 0 done; 1 it could not be done, the reason is on standard error; 2 a wrong command line; 130
// interrupted.
#include <cerrno>
#include <cstdio>
#include <exception>
#include <string>

#include <CLI/CLI.hpp>

#include <halyon/framework/HynVersion.h>
#include <host/HostError.h>
#include <host/ImportCommand.h>
#include <host/InfoCommand.h>
#include <host/ListCommand.h>
#include <host/OpenCommand.h>
#include <host/ShowCommand.h>
#include <host/SqlCommand.h>
#include <host/Storage.h>
#include <host/TrashCommand.h>

namespace
{
int Run(int argc, char** argv)
{
    CLI::App app("Keeps a catalogue of media files, through the Halyon database module.", "hynhost");
    app.set_version_flag("--version", std::string("hynhost ") + HALYON_VERSION_TEXT);
    app.require_subcommand(1);
    std::string storage;
    app.add_option("--storage", storage, "An extension library of SQLite with a storage layer, for file:...?vfs=NAME")
        ->type_name("LIBRARY")
        ->envname("HYNHOST_STORAGE");
    app.parse_complete_callback( // before the subcommand runs
        [&storage]
        {
            if (!storage.empty())
                HynHost::LoadStorage(storage);
        });
    HynHost::AddImportCommand(app);
    HynHost::AddListCommand(app);
    HynHost::AddShowCommand(app);
    HynHost::AddInfoCommand(app);
    HynHost::AddOpenCommand(app);
    HynHost::AddTrashCommand(app);
    HynHost::AddSqlCommand(app);
    try
    {
        app.parse(argc, argv);
        if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) // what could not be written was not done
            HynHost::ThrowSystemError("cannot write to", "standard output", errno);
        return 0;
    }
    catch (const CLI::RuntimeError& error) // a subcommand's own exit status
    {
        return error.get_exit_code();
    }
    catch (const CLI::ParseError& error)
    {
        return app.exit(error) == 0 ? 0 : 2; // help and version are 0
    }
}
} // namespace

int main(int argc, char** argv)
{
    try
    {
        return Run(argc, argv);
    }
    catch (const std::exception& error)
    {
        std::fflush(stdout);
        std::fprintf(stderr, "hynhost: %s\n", error.what());
        return 1;
    }
}
