// The panels through the whole application, over services in memory.
#include "tests/hud/panels_fixture.h"

namespace marbelot {
namespace {

constexpr const char* key =
    "ghp_"
    "abcdefghijklmnopqrstuvwxyz0123456789";

class ClipboardHUDTest : public PanelsTest {
 protected:
  ClipboardHUDTest() { perform("toggleClipboardHUD"); }
  MenuItem item(const Content& content) {
    MenuItem entry;
    entry.payload = std::make_shared<const HUDPayload>(HUDPayload{content});
    return entry;
  }
  MenuDelegate& menu() { return *desk_.statusItem.delegate; }
};

TEST_F(ClipboardHUDTest, ShowsASampleWhenItIsTurnedOnAndGoesWhenItIsTurnedOff) {
  EXPECT_EQ(face(shown("hud")).texts.at(1), "Clipboard preview enabled");
  EXPECT_EQ(desk_.defaults.stored.at("showClipboardHUD").asBool(), true);
  perform("toggleClipboardHUD");
  EXPECT_EQ(shown("hud"), nullptr);
  copy("silent");
  EXPECT_EQ(shown("hud"), nullptr);
}

TEST_F(ClipboardHUDTest, ShowsWhatWasCopiedInOneWindowThatNeverTakesTheKeys) {
  copy("first");
  copy(picture(40, 30));
  copy("second\nline");
  EXPECT_EQ(desk_.windows.live.size(), 1U);
  memory::MemoryWindow* hud = shown("hud");
  ASSERT_TRUE(hud);
  EXPECT_TRUE(hud->description.panel && hud->description.everySpace && !hud->description.titled);
  EXPECT_FALSE(hud->isKey());
  EXPECT_EQ(face(hud).texts,
            (std::vector<std::string>{"Text — 2 lines, 11 characters", "second", "line"}));
  EXPECT_EQ(specs(hud), "pin actions savetxt append copy done ");
  copy("  \n ");
  EXPECT_EQ(face(hud).texts.at(1), "second");  // blanks are no copy
}

TEST_F(ClipboardHUDTest, ShowsNoSecretAndNothingThatItsOwnerKeepsBack) {
  copy(std::string("token ") + key);
  EXPECT_EQ(face(shown("hud")).all().find(key + 6), std::string::npos);
  PasteboardContents secret;
  secret.text = share("hush");
  secret.concealed = true;
  desk_.pasteboard.copyElsewhere(secret, true);
  EXPECT_EQ(face(shown("hud")).all().find("hush"), std::string::npos);
}

TEST_F(ClipboardHUDTest, GoesByItselfButStaysWhileThePointerIsOnIt) {
  copy("text");
  memory::MemoryWindow* hud = shown("hud");
  desk_.queue.advance(2.5);
  ASSERT_TRUE(shown("hud"));
  desk_.screens.at = {hud->at.x - 5, hud->at.midY()};  // near enough
  desk_.queue.advance(20);
  ASSERT_TRUE(shown("hud"));
  desk_.screens.at = {3, 3};
  desk_.queue.advance(0.3);
  EXPECT_TRUE(shown("hud"));
  desk_.queue.advance(0.3);
  EXPECT_TRUE(hud->fading);
  EXPECT_EQ(desk_.keyMonitors.globals(), 0U);
  desk_.queue.advance(1);
  EXPECT_EQ(face(hud).all().find("text"), std::string::npos);
  // A new copy brings it back.
  copy("other");
  EXPECT_TRUE(shown("hud"));
}

TEST_F(ClipboardHUDTest, OffersTheBrowserForLinksOnly) {
  copy("  https://user@example.org:8080/a?b#c \n");
  memory::MemoryWindow* hud = shown("hud");
  ASSERT_TRUE(specs(hud).starts_with("pin open "));
  EXPECT_EQ(std::get<Button>(hud->find("open")->content).toolTip,
            "Open example.org in your browser");
  press(hud, "open");
  EXPECT_EQ(desk_.workspace.opened.back(), "https://user@example.org:8080/a?b#c");
  for (const char* text : {"ftp://example.org", "see https://example.org", "https://", "http:/x",
                           "https://a.org\\@b.org/"}) {
    copy(text);
    EXPECT_EQ(specs(shown("hud")).find("open"), std::string::npos) << text;
  }
}

TEST_F(ClipboardHUDTest, PreviewsTheHighlightedEntryBesideTheMenuWithoutCoveringIt) {
  perform("toggleClipboardHUD");
  desk_.statusItem.menuFrame = Rect{1000, 300, 300, 500};
  const MenuItem entry = item(share("entry")), other = item(picture(300, 200));
  menu().menuWillHighlightItem(&entry);
  memory::MemoryWindow* hud = shown("hud");
  ASSERT_TRUE(hud);
  EXPECT_EQ(hud->at.maxX(), 992);
  menu().menuWillHighlightItem(&other);
  EXPECT_EQ(face(hud).texts, std::vector<std::string>{"300 × 200"});
  EXPECT_EQ(hud->at.maxX(), 992);
  // Leaving the item hides it, unless the pointer is on its way to the panel.
  menu().menuWillHighlightItem(nullptr);
  desk_.queue.advance(0.5);
  menu().menuWillHighlightItem(&entry);
  desk_.queue.advance(3);
  EXPECT_TRUE(shown("hud"));
  menu().menuWillHighlightItem(nullptr);
  desk_.screens.at = {hud->at.midX(), hud->at.midY()};
  desk_.queue.advance(3);
  EXPECT_TRUE(shown("hud"));
  desk_.screens.at = {1100, 400};
  desk_.queue.advance(0.3);
  EXPECT_FALSE(shown("hud"));
}

TEST_F(ClipboardHUDTest, OpensTheEditorWhereThePreviewWasClickedAsTheMenuCloses) {
  perform("toggleClipboardHUD");
  const MenuItem entry = item(picture(300, 200));
  menu().menuWillHighlightItem(&entry);
  memory::MemoryWindow* hud = shown("hud");
  const Rect at = hud->at, pin = hud->find("pin")->frame;
  desk_.screens.at = {at.x + pin.midX(), at.y + pin.midY()};
  menu().menuDidClose();
  desk_.queue.advance(0);
  EXPECT_FALSE(shown("hud"));
  memory::MemoryWindow* editor = shown("editor");
  ASSERT_TRUE(editor);
  EXPECT_EQ(editor->at.origin(), at.origin());
  EXPECT_EQ(std::get<Button>(editor->find("pin")->content).symbol, "pin.fill");
}

TEST_F(ClipboardHUDTest, TakesNoOtherClosingOfTheMenuForAClickOnThePreview) {
  perform("toggleClipboardHUD");
  const MenuItem entry = item(picture(300, 200));
  const auto opensEditor = [&](const std::function<void(const Rect& hud)>& beforeClosing,
                               const std::string& action = {}) {
    menu().menuWillOpen();
    menu().menuWillHighlightItem(&entry);
    const Rect hud = shown("hud")->at;
    desk_.screens.at = {hud.midX(), hud.midY()};
    beforeClosing(hud);
    menu().menuDidClose();
    if (!action.empty()) perform(action);
    desk_.queue.advance(0);
    return shown("editor") != nullptr;
  };
  const auto nothing = [](const Rect&) {};
  EXPECT_FALSE(opensEditor(nothing, "toggleConcat"));
  EXPECT_FALSE(
      opensEditor([this](const Rect&) { desk_.keyMonitors.pressHere({.code = KeyCode::escape}); }));
  desk_.statusItem.closedByKey = true;
  EXPECT_FALSE(opensEditor(nothing));
  desk_.statusItem.closedByKey = false;
  // The menu lies over the preview.
  EXPECT_FALSE(opensEditor([&](const Rect& hud) {
    desk_.statusItem.menuFrame = hud;
    menu().menuWillHighlightItem(&entry);
  }));
  desk_.statusItem.menuFrame.reset();
  EXPECT_TRUE(opensEditor(nothing));
}

TEST_F(ClipboardHUDTest, ClosingTheMenuElsewhereLeavesThePreviewToItsOwnRule) {
  const MenuItem entry = item(share("entry"));
  menu().menuWillHighlightItem(&entry);
  desk_.screens.at = {3, 3};
  menu().menuDidClose();
  EXPECT_TRUE(shown("hud"));
  EXPECT_FALSE(shown("editor"));
  desk_.queue.advance(5);
  EXPECT_FALSE(shown("hud"));
}

TEST_F(ClipboardHUDTest, StandsBesideAnOpenEditorAndTheWidget) {
  copy(picture(300, 200));
  click(canvas(shown("hud")));
  memory::MemoryWindow* editor = shown("editor");
  ASSERT_TRUE(editor);
  perform("toggleAlwaysOnPreview");
  copy("new");
  const Rect widget = shown("widget")->at;
  const auto apart = [&] {
    const Rect hud = shown("hud")->at;
    return hud.intersection(editor->at).isEmpty() && hud.intersection(widget).isEmpty() &&
           editor->at.intersection(shown("widget")->at).isEmpty();
  };
  EXPECT_TRUE(shown("hud")->at.intersection(editor->at).isEmpty());
  EXPECT_TRUE(shown("hud")->at.intersection(widget).isEmpty());
  perform("cycleHUDPlacement");
  EXPECT_EQ(editor->at.maxX(), 1440 - 16);
  EXPECT_EQ(editor->at.y, 16);
  EXPECT_TRUE(apart());
}

TEST_F(ClipboardHUDTest, RevealsAValueNearThePointerAndForgetsIt) {
  perform("toggleClipboardHUD");
  copy(std::string("token ") + key);
  const auto entry = inMenu("Reveal full value");
  ASSERT_TRUE(entry);
  desk_.screens.at = {1400, 20};
  menu().menuItemChosen(*entry);
  memory::MemoryWindow* panel = shown("hud");
  ASSERT_TRUE(panel && panel->description.ignoresMouse);
  EXPECT_NE(face(panel).all().find(key), std::string::npos);
  EXPECT_EQ(panel->at.intersection(desk_.screens.screens[0].visibleFrame), panel->at);
  desk_.queue.advance(10);
  EXPECT_FALSE(shown("hud"));
  EXPECT_EQ(face(panel).all().find(key), std::string::npos);
}

class HUDEditorTest : public PanelsTest {
 protected:
  // The editor on a picture of 300 × 200 pixels.
  HUDEditorTest() {
    perform("toggleClipboardHUD");
    copy(picture(300, 200));
    click(canvas(shown("hud")));
    editor_ = shown("editor");
    desk_.queue.drain();
  }
  void pick(const std::string& group, const std::string& title) {
    ASSERT_TRUE(editor_->press("group:" + group));
    EXPECT_EQ(editor_->popUpView, "group:" + group);
    const auto item = memory::itemAt(*editor_->popUp, {title});
    ASSERT_TRUE(item && item->choosable()) << title;
    editor_->popUpChosen(*item);
    desk_.queue.drain();
  }
  void openFromMenu(const Content& content) {
    MenuItem entry;
    entry.payload = std::make_shared<const HUDPayload>(HUDPayload{content});
    desk_.statusItem.delegate->menuWillHighlightItem(&entry);
    click(canvas(shown("hud")));
    desk_.queue.drain();
  }
  std::string caption() { return face(editor_).texts.back(); }
  memory::MemoryWindow* editor_ = nullptr;
};

TEST_F(HUDEditorTest, AppliesEditsToItsOwnCopyAndUndoesThem) {
  EXPECT_EQ(specs(editor_),
            "pin crop group:transform group:border group:shadow group:emblem group:alpha "
            "ocr undo copy save done ");
  press(editor_, "undo");
  EXPECT_EQ(last(), "Nothing to undo");
  pick("transform", "Rotate right 90°");
  EXPECT_EQ(caption(), "200 × 300 — edited");
  pick("border", "Red");
  EXPECT_EQ(caption(), "212 × 312 — edited");
  EXPECT_EQ(clipboardSize(), "300x200");
  press(editor_, "undo");
  press(editor_, "undo");
  EXPECT_EQ(caption(), "300 × 200");
  const std::size_t notices = desk_.notices.posted.size();
  press(editor_, "done");
  EXPECT_EQ(shown("editor"), nullptr);
  EXPECT_EQ(clipboardSize(), "300x200");
  EXPECT_EQ(desk_.notices.posted.size(), notices);  // nothing was left to copy
}

TEST_F(HUDEditorTest, CopiesAnEditThatWasNotCopiedWhenDone) {
  pick("transform", "Resize to 50%");
  press(editor_, "done");
  EXPECT_EQ(clipboardSize(), "150x100");
  EXPECT_EQ(last(), "Copied image");
  desk_.queue.advance(0.6);
  EXPECT_FALSE(shown("hud"));  // it has been looked at
  desk_.queue.advance(1);
  EXPECT_FALSE(editor_->find("face"));
}

TEST_F(HUDEditorTest, TakesStepsInTheirOrderWhileAnEditIsUnderWay) {
  desk_.queue.holdBackground = true;
  ASSERT_TRUE(editor_->press("group:transform"));
  editor_->popUpChosen(*memory::itemAt(*editor_->popUp, {"Resize to 50%"}));
  editor_->press("group:border");
  editor_->popUpChosen(*memory::itemAt(*editor_->popUp, {"Black"}));
  editor_->press("copy");
  editor_->press("undo");
  EXPECT_EQ(clipboardSize(), "300x200");
  desk_.queue.holdBackground = false;
  desk_.queue.drain();
  EXPECT_EQ(clipboardSize(), "162x112");
  EXPECT_EQ(caption(), "150 × 100 — edited");
}

TEST_F(HUDEditorTest, StaysOnItsScreenWhereverThePointerIs) {
  desk_.screens.screens.push_back({{1440, 0, 1440, 900}, {1440, 0, 1440, 900}, 1});
  desk_.screens.at = {2000, 400};
  pick("transform", "Rotate right 90°");
  EXPECT_LE(editor_->at.maxX(), 1440);
  press(editor_, "done");
  copy(picture(300, 200, 100));
  memory::MemoryWindow* const hud = shown("hud");
  EXPECT_GE(hud->at.x, 1440);
  desk_.screens.at = {20, 400};
  click(canvas(hud));
  EXPECT_GE(editor_->at.x, 1440);
}

TEST_F(HUDEditorTest, AFailedEditChangesNothing) {
  pick("transform", "Resize to 25%");
  pick("transform", "Resize to 25%");
  pick("shadow", "  Small");
  const std::string before = caption();
  perform("hudMenuPicked:", "resize:0.05");
  perform("hudMenuPicked:", "shadow:same:small");
  EXPECT_EQ(last(), "Couldn't apply that edit");
  press(editor_, "undo");
  EXPECT_EQ(caption(), before);
}

TEST_F(HUDEditorTest, SavesUnderNamesThatAreFree) {
  // Until two of them fall into the same second.
  press(editor_, "save");
  for (int more = 0; more < 50 && !last().ends_with(" (2).png"); ++more) press(editor_, "save");
  const auto& posted = desk_.notices.posted;
  ASSERT_GE(posted.size(), 2U);
  const std::string first = posted[posted.size() - 2].text, second = last();
  EXPECT_TRUE(first.starts_with("Saved Edit ") && first.ends_with(".png")) << first;
  EXPECT_EQ(second, first.substr(0, first.size() - 4) + " (2).png");
  const std::string folder = home_ / "Pictures/Marbelot";
  EXPECT_TRUE(std::filesystem::exists(folder + "/" + first.substr(6)));
  EXPECT_TRUE(std::filesystem::exists(folder + "/" + second.substr(6)));
}

TEST_F(HUDEditorTest, StaysWhilePinnedOrWhileAnEditWouldBeLost) {
  desk_.screens.at = {editor_->at.midX(), editor_->at.midY()};
  desk_.queue.advance(1);
  press(editor_, "pin");
  desk_.screens.at = {3, 3};
  desk_.queue.advance(30);
  ASSERT_TRUE(shown("editor"));
  press(editor_, "pin");
  pick("border", "Red");
  desk_.screens.at = {editor_->at.midX(), editor_->at.midY()};
  desk_.queue.advance(1);
  desk_.screens.at = {3, 3};
  desk_.queue.advance(30);
  ASSERT_TRUE(shown("editor"));
  press(editor_, "copy");
  desk_.screens.at = {editor_->at.midX(), editor_->at.midY()};
  desk_.queue.advance(1);
  desk_.screens.at = {3, 3};
  desk_.queue.advance(2);
  EXPECT_FALSE(shown("editor"));
  const auto count = desk_.pasteboard.changeCount();
  for (const char* button : {"copy", "pin", "done"}) editor_->press(button);  // while it fades
  EXPECT_EQ(desk_.pasteboard.changeCount(), count);
}

TEST_F(HUDEditorTest, KeepsAnEditInTheHistoryWhenSomethingElseIsOpenedOrTheProgramEnds) {
  pick("border", "Red");
  copy("text");
  click(canvas(shown("hud")));
  EXPECT_EQ(*editor_->text("hudEditorText"), "text");
  EXPECT_TRUE(inMenu("312 × 212"));
  EXPECT_EQ(*desk_.pasteboard.contents().text, "text");
  openFromMenu(picture(100, 80));
  pick("border", "Red");
  launch();
  EXPECT_TRUE(inMenu("112 × 92"));
}

TEST_F(HUDEditorTest, AnEditOfASecretIsKeptOnTheClipboardOrNowhere) {
  PasteboardContents secret;
  secret.image = picture(50, 40);
  secret.concealed = true;
  desk_.pasteboard.copyElsewhere(secret, true);
  desk_.queue.drain();
  openFromMenu(*secret.image);
  pick("border", "Red");
  EXPECT_EQ(caption(), "62 × 52 — edited");
  openFromMenu(share("text"));
  EXPECT_EQ(*editor_->text("hudEditorText"), "text");
  EXPECT_EQ(clipboardSize(), "62x52");
  EXPECT_TRUE(desk_.pasteboard.contents().concealed);

  openFromMenu(*desk_.pasteboard.contents().image);
  pick("border", "Red");
  copy("newer");
  openFromMenu(share("text"));
  EXPECT_EQ(last(), "The clipboard has changed meanwhile");
  EXPECT_EQ(*desk_.pasteboard.contents().text, "newer");
  EXPECT_FALSE(inMenu("74 × 64"));
}

TEST_F(HUDEditorTest, FinishesWhatIsUnderWayBeforeSomethingElseIsOpened) {
  copy("first");
  copy("second");
  desk_.queue.holdBackground = true;
  ASSERT_TRUE(editor_->press("group:border"));
  editor_->popUpChosen(*memory::itemAt(*editor_->popUp, {"Red"}));
  editor_->press("save");
  click(canvas(shown("hud")));
  EXPECT_EQ(caption(), "300 × 200");
  desk_.queue.holdBackground = false;
  desk_.queue.drain();
  EXPECT_EQ(*editor_->text("hudEditorText"), "second");
  EXPECT_TRUE(last().starts_with("Saved Edit ")) << last();
  EXPECT_TRUE(inMenu("312 × 212"));
}

TEST_F(HUDEditorTest, CropsAndTakesTheResultAsAnEdit) {
  press(editor_, "crop");
  memory::MemoryWindow* crop = shown("crop");
  ASSERT_TRUE(crop);
  EXPECT_FALSE(shown("editor"));  // it would stand in the way
  desk_.queue.advance(5);
  press(crop, "cancel");
  EXPECT_FALSE(shown("crop"));
  EXPECT_TRUE(shown("editor"));
  press(editor_, "crop");
  crop = shown("crop");
  CanvasDelegate& view = canvas(crop, "cropView");
  drawn(view, {320, 240});
  view.mouseDown({{32, 20}});
  view.mouseDragged({{192, 120}});
  press(crop, "crop");
  EXPECT_EQ(last(), "Cropped");
  EXPECT_EQ(caption(), "150 × 94 — edited");
  EXPECT_EQ(clipboardSize(), "300x200");
  press(editor_, "undo");
  EXPECT_EQ(caption(), "300 × 200");
  // Another picture that is cropped takes the window, and the editor comes back.
  press(editor_, "crop");
  perform("cropClipImage:");
  EXPECT_TRUE(shown("editor") && shown("crop"));
  // One that the editor no longer shows goes to the clipboard.
  press(editor_, "crop");
  copy("other");
  click(canvas(shown("hud")));
  drawn(canvas(shown("crop"), "cropView"), {320, 240});
  canvas(shown("crop"), "cropView").mouseDown({{32, 20}});
  canvas(shown("crop"), "cropView").mouseDragged({{192, 120}});
  press(shown("crop"), "crop");
  EXPECT_EQ(clipboardSize(), "150x94");
}

TEST(UndoStack, DropsTheOldestWhereMemoryEnds) {
  UndoStack stack;
  const auto picture = [](int side) {
    const auto pixels = std::make_shared<const Bitmap>(*Bitmap::make(side, 4096));
    return EditedPicture{Image::fromPixels(pixels), pixels, {}};
  };
  for (int side = 8000; side < 8006; ++side) stack.push(picture(side));
  EXPECT_EQ(stack.size(), 4U);
  for (int side = 8005; side > 8001; --side) EXPECT_EQ(stack.pop()->image.width(), side);
  EXPECT_FALSE(stack.pop());
  EditedPicture large = picture(20000);
  large.thumbnail = large.image;
  stack.push(large);
  EXPECT_TRUE(stack.pop());
}

TEST_F(PanelsTest, ShowsTheCollectionInTheEditorAndCopiesItWhole) {
  perform("toggleConcat");
  copy("one");
  copy("two");
  perform("viewConcat");
  memory::MemoryWindow* editor = shown("editor");
  ASSERT_TRUE(editor);
  EXPECT_EQ(*editor->text("hudEditorText"), "one\ntwo");
  desk_.queue.advance(60);  // nobody has been there yet
  press(editor, "copy");
  EXPECT_EQ(last(), "Copied text");
  EXPECT_EQ(*desk_.pasteboard.contents().text, "one\ntwo");
  press(editor, "append");
  EXPECT_EQ(last(), "Collected 3 pieces");
}

}  // namespace
}  // namespace marbelot
