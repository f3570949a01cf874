// Object specs on 20,000 objects: the cost of putting every object on a
// spec of ten variables (linking each to its definition and working out
// the values), as a load of a file with specs does once per object.
//
// The spec's variables: two prompts, three initial values, one auto
// number on the database, and the rest derived from the others by
// references, one a parent lookup and one through a case modifier. The
// argument says how many of the derived ones are "$=(...)" expressions
// instead; each case is one BENCHMARK_CAPTURE line below.

#include "LibCore/error/tverror.h"
#include "LibDatabase/db/tvdatabase.h"
#include "LibDatabase/db/tvdbobject.h"
#include "LibDatabase/db/tvobjectspec.h"

#include <benchmark/benchmark.h>

#include <QCoreApplication>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

namespace {

constexpr int C_Objects = 20000;

// Ten variables; the first `expressions` derived ones are expressions.
std::string spec_text(int expressions)
{
    const char* const derived[] = {
        "$<%UPupil> on $<Topic>",
        "$<Left> x $<Right>",
        "$<Topic> in $<^Room>",
        "$<Number>: $<Left>",
    };
    const char* const evaluated[] = {
        "$=($<Left> * $<Right>)",
        "$=($<Left> + $<Right> + 1)",
    };
    std::string text = "$<Pupil> = prompt();\n$<Note> = prompt();\n"
                       "$<Topic> = init(\"tables\");\n$<Left> = init(\"7\");\n"
                       "$<Right> = init(\"8\");\n$<Number> = init(\"$<Next>\");\n";
    for (int i = 0; i < 4; ++i)
        text += "$<D" + std::to_string(i) + "> = eval(\"" +
                (i < expressions && i < 2 ? evaluated[i] : derived[i]) + "\");\n";
    return text;
}

// A database of C_Objects plain objects at the top level, not on any spec
// yet, and a spec of the given text.
struct Drill {
    std::unique_ptr<TVDatabase> db = std::make_unique<TVDatabase>();
    int spec = -1;

    explicit Drill(int expressions)
    {
        check(db->add_objectspec(new TVObjectSpec("TopLevel", "$<Next> = auto(\"00001\");\n"
                                                              "$<Room> = init(\"Study\");\n"
                                                              "$[Object] = ${Default}[];\n"),
                                 ""));
        check(db->add_objectspec(new TVObjectSpec("Drill", spec_text(expressions)), ""));
        check(db->create_default_spec());
        check(db->parse_objectspecs(true));
        check(db->apply_objectspecs());
        spec = db->get_objectspec_id_for_name("Drill");
        for (int i = 0; i < C_Objects; ++i)
            check(db->add_object(new TVDBObject, nullptr, "", "", -1, ""));
    }

    static void check(int result)
    {
        if (istvwarn(result)) {
            const TVErrDetails* details = get_tverror()->error_details();
            std::fprintf(stderr, "bench_spec: %s\n",
                         details != nullptr ? details->get_details(TVAspectUser).c_str() : "?");
            std::abort();
        }
    }

    // Every object back to no spec and no variables: what a first apply meets.
    void reset()
    {
        for (int i = 0; i < db->get_nobjects(); ++i) {
            TVDBObject* object = db->get_object_by_index(i);
            if (object->get_spec_id() == spec) {
                object->clear_vars();
                object->set_spec_id(-1);
            }
        }
    }
};

void BM_ApplySpec(benchmark::State& state, int expressions)
{
    get_tverror()->set_stream(nullptr, TVSevAll);
    Drill drill(expressions);
    for (auto _ : state) {
        state.PauseTiming();
        drill.reset();
        state.ResumeTiming();
        for (int i = 0; i < drill.db->get_nobjects(); ++i) {
            TVDBObject* object = drill.db->get_object_by_index(i);
            if (object->get_spec_id() == -1)
                Drill::check(drill.db->apply_objectspec_to_db(object, drill.spec, false));
        }
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * C_Objects);
}

} // namespace

BENCHMARK_CAPTURE(BM_ApplySpec, no_expressions, 0)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_ApplySpec, two_expressions, 2)->Unit(benchmark::kMillisecond);

// Expressions run in the script engine, which needs an application object.
int main(int argc, char** argv)
{
    static char noName[] = "";
    static char* qtArgv[] = {noName, nullptr};
    int qtArgc = 1;
    QCoreApplication application(qtArgc, qtArgv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
