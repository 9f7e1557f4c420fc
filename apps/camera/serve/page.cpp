#include "apps/camera/serve/page.h"

#include "apps/common/text.h"

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

namespace ostrel::apps::cli {

const char PAGE_STYLE[] =
    R"(html { background: #16181c; color: #dfe3e8; font: 16px/1.5 system-ui, sans-serif; }
body { margin: 0 auto; max-width: 1280px; padding: 16px; }
h1 { font-size: 20px; font-weight: 600; margin: 0 0 12px; overflow-wrap: anywhere; }
img { background: #000; display: block; height: auto; max-width: 100%; min-height: 120px; }
p { display: flex; flex-wrap: wrap; gap: 4px 24px; margin: 12px 0; }
#why { color: #ffb454; }
a { color: #6cb6ff; }
)";

// The picture shows itself; the script only says how it is, and looks again after a failure.
const char PAGE_SCRIPT[] = R"(const picture = document.querySelector('img');
const text = name => document.getElementById(name);
let looks = 0, silent = 0;
function lookAgain() {
  silent = 0;
  picture.src = 'stream.mjpeg?' + ++looks;
}
async function update() {
  try {
    const status = await (await fetch('status.json')).json();
    text('size').textContent = status.width + ' × ' + status.height;
    text('rate').textContent = status.shown ? status.rate.toFixed(1) + ' frames a second' : 'no picture';
    text('age').textContent = status.shown ? Math.round(status.age) + ' ms old' : '';
    text('why').textContent = status.why;
    silent = status.shown ? 0 : silent + 1;
    if (silent >= 3)
      lookAgain();
  } catch (error) {
    text('why').textContent = 'ostrel-camera does not answer any more';
    silent = 3;
  }
}
setInterval(update, 1000);
update();
)";

std::string htmlText(const std::string& utf8) {
    std::string html;
    for (const char letter : printable(utf8)) {
        switch (letter) {
        case '&':
            html += "&amp;";
            break;
        case '<':
            html += "&lt;";
            break;
        case '>':
            html += "&gt;";
            break;
        case '"':
            html += "&quot;";
            break;
        case '\'':
            html += "&#39;";
            break;
        default:
            html += letter;
        }
    }
    return html;
}

std::string pageHtml(const std::string& name) {
    const std::string title = htmlText(name);
    return "<!DOCTYPE html>\n"
           "<html lang=\"en\">\n"
           "<meta charset=\"utf-8\">\n"
           "<meta name=\"viewport\" content=\"width=device-width\">\n"
           "<title>" +
           title +
           "</title>\n"
           "<link rel=\"stylesheet\" href=\"style.css\">\n"
           "<link rel=\"icon\" href=\"data:,\">\n"
           "<h1>" +
           title +
           "</h1>\n"
           "<img src=\"stream.mjpeg\" alt=\"live picture\">\n"
           "<p><span id=\"size\"></span><span id=\"rate\"></span><span id=\"age\"></span>"
           "<a href=\"snapshot.jpg\" download>Snapshot</a><span id=\"why\"></span></p>\n"
           "<script src=\"page.js\"></script>\n"
           "</html>\n";
}

std::string statusJson(const LiveFacts& facts, const Size& size, int64_t now) {
    QJsonObject status;
    status["width"] = size.width;
    status["height"] = size.height;
    status["shown"] = facts.shown;
    status["number"] = static_cast<double>(facts.number);
    status["rate"] = facts.rate;
    status["age"] = facts.shown ? static_cast<double>(now - facts.captureTime) / 1e6 : 0; // milliseconds
    status["why"] = QString::fromStdString(facts.why);
    return QJsonDocument(status).toJson(QJsonDocument::Compact).toStdString() + "\n";
}

} // namespace ostrel::apps::cli
