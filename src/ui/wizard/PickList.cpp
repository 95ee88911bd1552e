#include "ui/wizard/PickList.h"

#include <QStyledItemDelegate>

#include <algorithm>

namespace {
class FitWidthDelegate : public QStyledItemDelegate {
  public:
    using QStyledItemDelegate::QStyledItemDelegate;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override {
        QSize size = QStyledItemDelegate::sizeHint(option, index);
        if (const auto* view = qobject_cast<const QAbstractItemView*>(option.widget))
            size.setWidth(std::min(size.width(), view->viewport()->width()));
        return size;
    }
};
} // namespace

PickList::PickList(QWidget* parent) : QListWidget(parent) {}

void PickList::fitRowsToWidth() {
    fitted_ = true;
    setItemDelegate(new FitWidthDelegate(this));
    setTextElideMode(Qt::ElideMiddle);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setResizeMode(QListView::Adjust); // rows are fitted again when the page is resized
}

void PickList::addRow(const QString& text) {
    addItem(text);
    if (fitted_) item(count() - 1)->setToolTip(text);
}

void PickList::pickNothing() {
    selectionModel()->clear();
}

void PickList::focusInEvent(QFocusEvent* event) {
    const bool hadCurrent = currentIndex().isValid();
    QListWidget::focusInEvent(event); // makes the first row current
    if (!hadCurrent && selectedItems().isEmpty()) selectionModel()->clearCurrentIndex();
}
