#pragma once

#include <QComboBox>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace lumo {

// A choice from a list that opens on demand.
class Picker final : public QComboBox {
  public:
    // The name is for screen readers.
    explicit Picker(std::string_view name);

    // Replaces the choices and chooses one of them, without a call of onChosen. A list that is open
    // stays open where nothing has changed.
    void setChoices(const std::vector<std::string> &titles, int chosen);

    // The user chose.
    std::function<void(std::size_t)> onChosen;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

  protected:
    void paintEvent(QPaintEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

  private:
    std::vector<std::string> titles_;
};

} // namespace lumo
