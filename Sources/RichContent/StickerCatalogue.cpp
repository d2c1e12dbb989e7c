// SPDX-License-Identifier: MIT
#include "RichContent/StickerCatalogue.h"

#include <QStringView>

namespace orvane {

namespace {

struct StickerRow {
    QStringView emoji;
    QStringView russian;
    QStringView english;
};

struct PackRow {
    QStringView id;
    QStringView name;
    QStringView emoji;
    /// Sticker ids are this and a number from 1.
    QStringView code;
    StickerRow stickers[8];
};

constexpr PackRow rows[] = {
    {u"smileys",
     u"Смайлы",
     u"😀",
     u"s",
     {{u"😂", u"смех", u"lol"},
      {u"😍", u"любовь", u"love"},
      {u"🤔", u"думать", u"think"},
      {u"😎", u"круто", u"cool"},
      {u"😢", u"грусть", u"sad"},
      {u"😡", u"злость", u"angry"},
      {u"🥳", u"праздник", u"party"},
      {u"🤗", u"обнять", u"hug"}}},
    {u"cats",
     u"Коты",
     u"🐱",
     u"c",
     {{u"🐱", u"кот", u"cat"},
      {u"😺", u"рад", u"happy"},
      {u"😸", u"улыбка", u"grin"},
      {u"😹", u"смех", u"laugh"},
      {u"😻", u"любовь", u"heart"},
      {u"😼", u"хитрый", u"smirk"},
      {u"🙀", u"шок", u"shock"},
      {u"😿", u"грусть", u"cry"}}},
    {u"dogs",
     u"Собаки",
     u"🐶",
     u"d",
     {{u"🐶", u"пёс", u"dog"},
      {u"🐕", u"собака", u"doggo"},
      {u"🦮", u"поводырь", u"guide"},
      {u"🐕🦺", u"служба", u"service"},
      {u"🐩", u"пудель", u"poodle"},
      {u"🦴", u"кость", u"bone"},
      {u"🐾", u"лапки", u"paws"},
      {u"🐕🦺", u"верный", u"loyal"}}},
    {u"hearts",
     u"Сердечки",
     u"❤️",
     u"h",
     {{u"❤️", u"любовь", u"love"},
      {u"🧡", u"оранж", u"orange"},
      {u"💛", u"жёлтый", u"yellow"},
      {u"💚", u"зелёный", u"green"},
      {u"💙", u"синий", u"blue"},
      {u"💜", u"фиол", u"purple"},
      {u"💕", u"пара", u"couple"},
      {u"💔", u"разбито", u"broken"}}},
    {u"gestures",
     u"Жесты",
     u"👍",
     u"g",
     {{u"👍", u"лайк", u"like"},
      {u"👎", u"дизлайк", u"dislike"},
      {u"👏", u"аплод", u"clap"},
      {u"🙌", u"ура", u"hooray"},
      {u"🤝", u"договор", u"deal"},
      {u"✌️", u"мир", u"peace"},
      {u"🤞", u"удача", u"luck"},
      {u"💪", u"сила", u"strong"}}},
    {u"nature",
     u"Природа",
     u"🌿",
     u"n",
     {{u"🌸", u"цветок", u"flower"},
      {u"🌺", u"гибискус", u"hibiscus"},
      {u"🌻", u"подсолнух", u"sunflower"},
      {u"🌹", u"роза", u"rose"},
      {u"🍀", u"удача", u"clover"},
      {u"🌙", u"луна", u"moon"},
      {u"⭐", u"звезда", u"star"},
      {u"🌈", u"радуга", u"rainbow"}}},
    {u"party",
     u"Праздник",
     u"🎉",
     u"p",
     {{u"🎉", u"праздник", u"party"},
      {u"🎂", u"др", u"birthday"},
      {u"🎁", u"подарок", u"gift"},
      {u"🎈", u"шарик", u"balloon"},
      {u"🎊", u"конфетти", u"confetti"},
      {u"🥂", u"тост", u"cheers"},
      {u"🍾", u"шампанское", u"champagne"},
      {u"🎀", u"лента", u"ribbon"}}},
    {u"food",
     u"Еда",
     u"🍕",
     u"f",
     {{u"🍕", u"пицца", u"pizza"},
      {u"🍔", u"бургер", u"burger"},
      {u"🍣", u"суши", u"sushi"},
      {u"☕", u"кофе", u"coffee"},
      {u"🍩", u"пончик", u"donut"},
      {u"🍦", u"мороженое", u"icecream"},
      {u"🍷", u"вино", u"wine"},
      {u"🍿", u"попкорн", u"popcorn"}}},
    {u"sport",
     u"Спорт",
     u"⚽",
     u"sp",
     {{u"⚽", u"футбол", u"football"},
      {u"🏀", u"баскетбол", u"basketball"},
      {u"🎾", u"теннис", u"tennis"},
      {u"🏆", u"победа", u"trophy"},
      {u"🥇", u"золото", u"gold"},
      {u"🏋️", u"качалка", u"gym"},
      {u"🚴", u"вело", u"bike"},
      {u"🏄", u"сёрф", u"surf"}}},
    {u"travel",
     u"Путешествия",
     u"✈️",
     u"t",
     {{u"✈️", u"самолёт", u"plane"},
      {u"🏖️", u"пляж", u"beach"},
      {u"🏔️", u"горы", u"mountain"},
      {u"🗽", u"статуя", u"statue"},
      {u"🌅", u"закат", u"sunset"},
      {u"🗺️", u"карта", u"map"},
      {u"🏨", u"отель", u"hotel"},
      {u"🧳", u"чемодан", u"luggage"}}},
};

} // namespace

QList<StickerPack> stickerCatalogue() {
    QList<StickerPack> packs;
    for (const PackRow &row : rows) {
        StickerPack pack;
        pack.id = row.id.toString();
        pack.name = row.name.toString();
        pack.emoji = row.emoji.toString();
        for (const StickerRow &drawn : row.stickers) {
            Sticker sticker;
            sticker.id = row.code.toString() + QString::number(pack.stickers.size() + 1);
            sticker.emoji = drawn.emoji.toString();
            sticker.keywords = {drawn.russian.toString(), drawn.english.toString()};
            pack.stickers.append(sticker);
        }
        packs.append(pack);
    }
    return packs;
}

} // namespace orvane
