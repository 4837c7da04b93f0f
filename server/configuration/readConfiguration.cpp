#include "readConfiguration.h"

#include "configurationChecks.h"
#include "options.h"
#include "textChecks.h"

#include <boost/algorithm/string/case_conv.hpp>
#include <boost/algorithm/string/replace.hpp>
#include <boost/any.hpp>
#include <boost/program_options/errors.hpp>
#include <boost/program_options/parsers.hpp>
#include <boost/program_options/variables_map.hpp>
#include <fstream>

namespace po = boost::program_options;

namespace {

using Problems = std::vector<std::string>;

constexpr std::string_view prefix = "QUORVEL_SERVER_";

/// "QUORVEL_SERVER_SMTP_HOST" is "smtp-host".
std::string settingOf(const std::string &variable)
{
    auto name = boost::algorithm::to_lower_copy(variable.substr(prefix.size()));
    boost::algorithm::replace_all(name, "_", "-");
    return name;
}

void readEnvironment(const std::map<std::string, std::string> &environment,
                     const po::options_description &settings, po::variables_map &read, Problems &problems)
{
    po::parsed_options parsed(&settings);
    for (const auto &[variable, value] : environment) {
        if (!variable.starts_with(prefix))
            continue;
        const auto name = settingOf(variable);
        if (settings.find_nothrow(name, false))
            parsed.options.emplace_back(name, std::vector{value});
        else
            problems.push_back("There is no setting for the environment variable " + variable + ".");
    }
    for (const auto &option : parsed.options) {
        po::parsed_options one(&settings);
        one.options.push_back(option);
        try {
            po::store(one, read);
        } catch (const po::error &) { // its text would hold the value, which may be a secret
            problems.push_back("The environment variable of " + option.string_key + " has no usable value.");
        }
    }
}

void readFile(const std::string &path, const po::options_description &settings, po::variables_map &read,
              Problems &problems)
{
    std::ifstream file(path);
    if (!file) {
        problems.push_back("The configuration file " + path + " cannot be read.");
        return;
    }
    try {
        const auto parsed = po::parse_config_file(file, settings, true);
        for (const auto &option : parsed.options) {
            if (option.unregistered)
                problems.push_back("There is no setting " + option.string_key + ", which stands in " + path +
                                   ".");
        }
        po::store(parsed, read);
    } catch (const po::invalid_syntax &) {
        problems.push_back("A line of " + path + " is not of the form: name = value.");
    } catch (const po::error_with_option_name &problem) {
        problems.push_back("The setting " + problem.get_option_name() + " in " + path +
                           " has no usable value.");
    } catch (const po::error &) {
        problems.push_back("A line of " + path + " is not of the form: name = value.");
    }
}

/// A preset as an operator would write it.
std::string presetOf(const boost::any &preset)
{
    if (const auto *number = boost::any_cast<int>(&preset))
        return std::to_string(*number);
    const auto *text = boost::any_cast<std::string>(&preset);
    return text ? *text : std::string();
}

/// The first line of a file with a secret; none where it cannot be read or is blank.
std::optional<std::string> secretIn(const std::string &path)
{
    std::ifstream file(path);
    std::string line;
    std::getline(file, line);
    if (trimmed(line).empty())
        return std::nullopt;
    if (line.ends_with('\r'))
        line.pop_back();
    return line;
}

/// Puts what stands in the file of that secret in the place of the secret.
void readSecretFile(const std::string &name, po::variables_map &read, Problems &problems)
{
    const auto given = read.find(name + "-file");
    if (given == read.end())
        return;
    const auto path = given->second.as<std::string>();
    if (auto secret = secretIn(path)) {
        if (!read[name].defaulted())
            problems.push_back(name + " and " + name + "-file are both set.");
        read.at(name).value() = *std::move(secret);
    } else {
        problems.push_back("The file of " + name + ", " + path + ", cannot be read or is empty.");
    }
}

} // namespace

ConfigurationResult readConfiguration(const ConfigurationSources &sources)
{
    RawSettings raw;
    const auto settings = settingsInto(raw);
    po::variables_map read;
    Problems problems;
    readEnvironment(sources.environment, settings, read, problems); // what is stored first counts
    if (sources.file)
        readFile(*sources.file, settings, read, problems);
    po::store(po::parsed_options(&settings), read); // the presets of all others
    for (const auto &name : secretSettings())
        readSecretFile(name, read, problems);
    if (!problems.empty()) // what follows would complain about what could not be read
        return {{}, std::move(problems)};
    po::notify(read);
    auto made = checkedConfiguration(raw, problems);
    return {std::move(made), std::move(problems)};
}

std::string describeSettings()
{
    RawSettings raw;
    std::string text;
    const auto settings = settingsInto(raw);
    for (const auto &setting : settings.options()) {
        boost::any preset;
        const bool hasPreset = setting->semantic()->apply_default(preset);
        auto name = "  " + setting->long_name();
        name.resize(std::max<std::size_t>(name.size() + 1, 32), ' ');
        text += name + setting->description();
        if (hasPreset && !presetOf(preset).empty())
            text += " [" + presetOf(preset) + "]";
        text += "\n";
    }
    return text;
}
