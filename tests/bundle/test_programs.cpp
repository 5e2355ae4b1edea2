#include "tests/bundle/test_programs.h"

#include <sstream>
#include <stdexcept>

namespace Bundle {

namespace {

std::vector<std::string> fieldsOf(const std::string& line) {
    std::vector<std::string> fields;
    std::size_t begin = 0;
    for (std::size_t end = line.find('|'); end != std::string::npos; end = line.find('|', begin)) {
        fields.push_back(line.substr(begin, end - begin));
        begin = end + 1;
    }
    fields.push_back(line.substr(begin));
    return fields;
}

// NAME=VALUE, or NAME=set:VALUE.
void addVariable(TestProgram& program, const std::string& setting, const std::string& separator) {
    const std::size_t end = setting.find(separator);
    if (end == std::string::npos || end == 0) {
        throw std::runtime_error("An unknown change of the environment: " + setting);
    }
    program.environment.emplace_back(setting.substr(0, end), setting.substr(end + separator.size()));
}

void obey(TestProgram& program, const std::string& property, const std::string& value) {
    if (property == "TIMEOUT") {
        program.limit = std::chrono::seconds(std::stoi(value));
    } else if (property == "RUN_SERIAL") {
        program.alone = value == "TRUE";
    } else if (property == "RESOURCE_LOCK") {
        program.lock = value;
    } else if (property == "ENVIRONMENT") {
        addVariable(program, value, "=");
    } else if (property == "ENVIRONMENT_MODIFICATION") {
        addVariable(program, value, "=set:");
    } else if (property != "LABELS") {
        throw std::runtime_error("An unknown property of a test program: " + property);
    }
}

TestProgram readTestProgram(const std::string& line) {
    const std::vector<std::string> fields = fieldsOf(line);
    if (fields.size() < 2 || fields.size() % 2 != 0) {
        throw std::runtime_error("Not a test program with properties: " + line);
    }
    TestProgram program{.path = fields[0], .together = fields[1]};
    for (std::size_t i = 2; i < fields.size(); i += 2) {
        obey(program, fields[i], fields[i + 1]);
    }
    if (program.limit <= std::chrono::seconds(0)) {
        throw std::runtime_error("A test program without a time limit: " + line);
    }
    return program;
}

}  // namespace

std::string TestProgram::name() const {
    const std::size_t begin = path.rfind('/') + 1;
    return path.substr(begin, path.rfind('.') - begin);
}

std::vector<TestProgram> readTestPrograms(const std::string& list) {
    std::vector<TestProgram> programs;
    std::istringstream lines(list);
    for (std::string line; std::getline(lines, line);) {
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        if (!line.empty()) {
            programs.push_back(readTestProgram(line));
        }
    }
    return programs;
}

}  // namespace Bundle
