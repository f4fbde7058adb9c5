#include "simulator/commands/SetupModule.h"

#include "simulator/commands/BlockReader.h"
#include "simulator/commands/DesignBound.h"
#include "simulator/commands/Names.h"
#include "simulator/commands/Requirements.h"
#include "simulator/model/Text.h"

#include <cmath>

namespace vantor::commands {
namespace {

using model::Quoted;

/// A number of passes: whole, 1 or more.
int RequirePasses(double value, const std::string& location) {
    if (value < 1.0 || value > 1000.0 || value != std::floor(value)) {
        FailBadValue(location + " must be a whole number from 1 to 1000, not " + model::FormatNumber(value));
    }
    return static_cast<int>(value);
}

double RequirePercent(double value, const std::string& location) {
    if (!(value > 0.0) || value > 100.0) {
        FailBadValue(location + " must be more than 0 and at most 100, not " + model::FormatNumber(value));
    }
    return value;
}

/// The module "AnalysisSetup".
class SetupModule : public DesignBound {
public:
    SetupModule(SessionPointer session, DesignReference design)
        : DesignBound(methods, std::move(session), std::move(design)) {}

private:
    static const MethodTable methods;

    Value InsertSetup(Arguments& arguments) {
        model::AnalysisSetup setup;
        setup.type = arguments.Text();
        RequireOneOf(setup.type, {magnetostatic}, "argument 1");
        BlockReader block(arguments.List(), "argument 2");
        setup.name = block.Name();
        if (setup.name.empty()) {
            FailBadValue("argument 2: a setup needs a name");
        }
        setup.enabled = block.Flag("Enabled:=");
        setup.maximumPasses = RequirePasses(block.Number("MaximumPasses:="), block.LocationOf("MaximumPasses:="));
        setup.percentError = RequirePercent(block.Number("PercentError:="), block.LocationOf("PercentError:="));
        block.End();
        arguments.End();
        if (model::FindByName(RequireDesign().setups, setup.name)) {
            FailBadValue("a setup named " + Quoted(setup.name) + " exists already");
        }
        RequireDesign().setups.push_back(setup);
        MarkChanged();
        return {};
    }

    Value EditSetup(Arguments& arguments) {
        const std::string& name = arguments.Text();
        BlockReader block(arguments.List(), "argument 2", name);
        model::AnalysisSetup& present = RequireNamed(RequireDesign().setups, name, "setup");
        model::AnalysisSetup setup = present;
        setup.enabled = block.Flag("Enabled:=");
        if (block.NextIs("MaximumPasses:=")) {
            setup.maximumPasses = RequirePasses(block.Number("MaximumPasses:="), block.LocationOf("MaximumPasses:="));
        }
        if (block.NextIs("PercentError:=")) {
            setup.percentError = RequirePercent(block.Number("PercentError:="), block.LocationOf("PercentError:="));
        }
        if (!block.AtEnd()) {
            setup.expressionCache = ReadExpressionCache(block.Block("ExpressionCache"));
        }
        block.End();
        arguments.End();
        present = setup;
        MarkModelChanged();
        return {};
    }

    std::vector<model::ExpressionCacheItem> ReadExpressionCache(BlockReader cache) const {
        std::vector<model::ExpressionCacheItem> items;
        while (!cache.AtEnd()) {
            BlockReader entry = cache.Block("CacheItem");
            model::ExpressionCacheItem item;
            item.title = entry.Text("Title:=");
            item.expression = entry.Text("Expression:=");
            model::CheckOutputExpression(RequireDesign(), item.expression);
            entry.Literal("ReportType:=", magnetostatic);
            item.reportType = magnetostatic;
            entry.Block("ExpressionContext").End();
            entry.End();
            items.push_back(std::move(item));
        }
        return items;
    }
};

const ScriptObject::MethodTable SetupModule::methods = {
    {"GetSetups", Bound<&SetupModule::Names<&model::Design::setups>>::Handle},
    {"InsertSetup", Bound<&SetupModule::InsertSetup>::Handle},
    {"EditSetup", Bound<&SetupModule::EditSetup>::Handle},
};

} // namespace

Value::Object MakeSetupModule(SessionPointer session, DesignReference design) {
    return std::make_shared<SetupModule>(std::move(session), std::move(design));
}

} // namespace vantor::commands
