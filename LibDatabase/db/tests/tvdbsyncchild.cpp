// A device of the sync soak: "tvdbsyncchild FILE SHARE HOST FIRST COUNT"
// opens FILE (made if missing) as the program does, links it to the shared
// folder SHARE, adds COUNT nodes named HOST-FIRST onwards, printing "done
// NAME" once each operation returned, then pulls every peer and pushes with
// a stamped save, printing "synced". The folders of the side files come from
// the environment. A failure prints "fail" and the messages, and exits 3.

#include "LibComms/cloud/tvcloudinstance.h"
#include "LibComms/cloud/tvcloudservice.h"
#include "LibComms/cloud/tvlocalservice.h"
#include "LibCore/error/tverror.h"
#include "LibCore/fileutils/tvfileutils.h"
#include "LibDatabase/db/tvdatabase.h"
#include "LibDatabase/db/tvexternaldb.h"
#include "TestSupport/tvdbchild.h"
#include "TestSupport/tvdbtestnode.h"

#include <cstdio>
#include <cstdlib>
#include <string>

int main(int argc, char** argv)
{
    if (argc != 6)
        return 2;
    const std::string file = argv[1];
    const std::string share = argv[2];
    const std::string host = argv[3];
    const int first = std::atoi(argv[4]);
    const int count = std::atoi(argv[5]);
    const auto setup = [&] {
        TVCloudService::override_host(host);
        if (istvwarn(TVLocalService::set_syncdir(share)))
            return TVDBChild::fail("share");
        get_tverror()->clear_all();
        return 0;
    };
    return TVDBChild::run(file, setup, [&](TVDatabase& db) {
        if (db.get_nexternals() == 0) {
            TVExternalDB* link = nullptr;
            if (istvwarn(db.add_external(TVCloudInstance::E_LocalShare, tv_basename(file), 3, link)))
                return TVDBChild::fail("link");
        }
        for (int i = first; i < first + count; ++i) {
            const std::string name = host + "-" + std::to_string(i);
            if (db.add_object(new TVDBTestNode(name), nullptr, "", "", -1, "Add " + name) !=
                TVErrC_ok)
                return TVDBChild::fail("add");
            std::printf("done %s\n", name.c_str());
            std::fflush(stdout);
        }
        // The first ask for a peer's new file only marks it wanted.
        for (int i = 0; i < 20; ++i) {
            if (istvwarn(db.pull_all(!db.needs_save())))
                return TVDBChild::fail("pull");
            if (db.sync_state() == 1 && !db.has_ext_data())
                break;
        }
        if (istvwarn(db.save(true, true, false)))
            return TVDBChild::fail("save");
        if (istvwarn(db.unload()))
            return TVDBChild::fail("unload");
        std::printf("synced\n");
        std::fflush(stdout);
        return 0;
    });
}
