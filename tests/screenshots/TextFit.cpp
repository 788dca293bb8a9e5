#include "tests/screenshots/TextFit.h"

#include <QJSValue>
#include <QQuickItem>

namespace skyflare {

namespace {

constexpr double tolerance = 1; // pixels: texts end between them
constexpr int leastPixelSize = 12;

struct ShownText {
    QQuickItem *item;
    QString text;
    QRectF rect; ///< what is drawn, in the window
    double z;    ///< of what it belongs to: that of a list is above the rest
};

bool isScrolled(const QQuickItem *item)
{
    for (; item != nullptr; item = item->parentItem())
        if (item->inherits("QQuickFlickable") && item->property("interactive").toBool())
            return true;
    return false;
}

/// Where its letters are, in itself.
QRectF drawnIn(const QQuickItem &text)
{
    const QSizeF content(text.property("contentWidth").toReal(), text.property("contentHeight").toReal());
    const double left = text.property("leftPadding").toReal();
    const double top = text.property("topPadding").toReal();
    const double roomX = text.width() - left - text.property("rightPadding").toReal() - content.width();
    const double roomY = text.height() - top - text.property("bottomPadding").toReal() - content.height();
    const auto share = [](int alignment, int middle, int end) {
        return (alignment & middle) != 0 ? 0.5 : (alignment & end) != 0 ? 1.0 : 0.0;
    };
    const double x =
        share(text.property("effectiveHorizontalAlignment").toInt(), Qt::AlignHCenter, Qt::AlignRight);
    const double y = share(text.property("verticalAlignment").toInt(), Qt::AlignVCenter, Qt::AlignBottom);
    return {QPointF(left + roomX * x, top + roomY * y), content};
}

/// Those that are for the user at the moment: not below a popup or the explanations.
void collect(QQuickItem *in, double z, std::vector<ShownText> &texts)
{
    if (!in->isVisible() || !in->isEnabled() || in->opacity() == 0)
        return;
    if (in->inherits("QQuickText") && !in->property("text").toString().isEmpty())
        texts.push_back({in, in->property("text").toString(), in->mapRectToScene(drawnIn(*in)), z});
    for (QQuickItem *child : in->childItems())
        collect(child, z + child->z(), texts);
}

std::string faultOf(const ShownText &text, const QRectF &window)
{
    const QQuickItem &item = *text.item;
    const QRectF drawn = drawnIn(item);
    const QRectF place =
        QRectF(QPointF(), item.size()).adjusted(-tolerance, -tolerance, tolerance, tolerance);
    if (item.property("truncated").toBool())
        return "cut off";
    if (!place.contains(drawn))
        return "larger than its place";
    if (item.property("fontInfo").value<QJSValue>().property("pixelSize").toInt() < leastPixelSize)
        return "too small";
    if (!isScrolled(&item) && !window.contains(text.rect))
        return "out of the window";
    return {};
}

} // namespace

std::vector<std::string> textsThatDoNotFit(QQuickWindow &window)
{
    std::vector<ShownText> texts;
    collect(window.contentItem(), 0, texts);
    std::vector<std::string> faults;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        const std::string quoted = '"' + texts[i].text.toStdString() + "\" is ";
        const std::string fault = faultOf(texts[i], QRectF(QPointF(), window.size()));
        if (!fault.empty())
            faults.push_back(quoted + fault);
        for (std::size_t j = 0; j < i; ++j)
            if (texts[i].z == texts[j].z && texts[i].rect.intersects(texts[j].rect) &&
                !isScrolled(texts[i].item))
                faults.push_back(quoted + "over \"" + texts[j].text.toStdString() + '"');
    }
    return faults;
}

} // namespace skyflare
