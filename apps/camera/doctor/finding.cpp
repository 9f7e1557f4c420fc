#include "apps/camera/doctor/finding.h"

#include "apps/common/text.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <algorithm>

namespace ostrel::apps::cli::doctor {

namespace {

const std::size_t VERDICT_WIDTH = 9;
const std::size_t CHECK_WIDTH = 13;

std::string nameOf(Verdict verdict) {
    switch (verdict) {
    case Verdict::Ok:
        break;
    case Verdict::Warning:
        return "warning";
    case Verdict::Problem:
        return "problem";
    }
    return "ok";
}

std::string padded(const std::string& word, std::size_t width) {
    return word + std::string(width - std::min(width - 1, word.size()), ' ');
}

} // namespace

Verdict worst(const Findings& findings) {
    Verdict gravest = Verdict::Ok;
    for (const Finding& finding : findings)
        gravest = std::max(gravest, finding.verdict);
    return gravest;
}

std::string findingsText(const Findings& findings) {
    std::string text;
    std::string camera;
    for (const Finding& finding : findings) {
        if (finding.camera != camera)
            text += printable(finding.camera) + ":\n";
        camera = finding.camera;
        text += padded(nameOf(finding.verdict), VERDICT_WIDTH) + padded(finding.check, CHECK_WIDTH) +
                printable(finding.fact) + "\n";
        if (!finding.next.empty())
            text += std::string(VERDICT_WIDTH + CHECK_WIDTH, ' ') + "next: " + printable(finding.next) + "\n";
    }
    return text;
}

std::string findingsJson(const Findings& findings) {
    const auto text = [](const std::string& utf8) { return QString::fromStdString(printable(utf8)); };
    QJsonArray checks;
    for (const Finding& finding : findings)
        checks.append(QJsonObject{{"check", text(finding.check)},
                                  {"verdict", text(nameOf(finding.verdict))},
                                  {"fact", text(finding.fact)},
                                  {"next", text(finding.next)},
                                  {"camera", text(finding.camera)}});
    const QJsonObject all{{"verdict", text(nameOf(worst(findings)))}, {"checks", checks}};
    return QJsonDocument(all).toJson().toStdString();
}

} // namespace ostrel::apps::cli::doctor
