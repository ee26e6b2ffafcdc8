#pragma once

#include <QLabel>
#include <QStringList>

namespace lumo {

// A shortcut as the caps of its keys, from left to right whatever the language; as plain text where
// they have not enough room.
class Keycaps final : public QLabel {
  public:
    Keycaps();

    void setKeys(const QStringList &keys, const QString &separator);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

  protected:
    void paintEvent(QPaintEvent *event) override;

  private:
    int capWidth(const QString &key) const;
    int separatorWidth() const;

    QStringList keys_;
    QString separator_;
};

} // namespace lumo
