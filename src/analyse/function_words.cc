// Function words: articles, pronouns, prepositions, conjunctions, auxiliary
// verbs, and adverbs that say nothing without their sentence. A word that can
// name a topic is not listed, even where its other sense is a function word
// and more frequent, as with "mine", "stato" or "point". The exceptions are
// auxiliaries and pronouns that a text has on every line, such as "may", "will"
// or "été".
#include "analyse/language.h"

namespace vek::analysis {

const FunctionWords catalan_words = {
    .others =
        "a abans així això al aleshores algun alguna algunes alguns allò als "
        "altra altre altres amb ambdós aquell aquella aquelles aquells aquest "
        "aquesta aquestes aquests ara bé cada cap com contra dalt des després "
        "doncs durant ell ella elles ells en encara endavant enfront ens entre "
        "era eren estan estava està et ets ha hagut han has havia havien he "
        "hem hi ho i ja jo li llur llurs m' ma malgrat mateix mateixa mateixes "
        "mateixos mentre menys meu meus meva meves molt molta moltes molts mon "
        "més n' ni no nosaltres nostra nostre nostres o on pel pels per perquè "
        "però poc poca pocs poden poques pot potser quan quant quants que qui "
        "quin quina quines quins què s' sa se segons sempre sense ser seria "
        "serien serà seu seus seva seves si sinó sobre soc som sota sí són t' "
        "ta també tampoc tan tant te teu teus teva teves tot tota totes tots "
        "tu un us va vaig vam van vau vosaltres vostra vostre vostres vostè",
    .articles = "el els en l' la les lo los na un una unes uns",
    .of = "d' de del dels",
};

const FunctionWords danish_words = {
    .others =
        "ad aldrig alene alle allerede alligevel alt altid altså anden andet "
        "andre at bag bare begge blandt blev blevet blive bliver burde både "
        "bør da de dem den denne der deraf derefter deres derfor derfra deri "
        "dermed derpå derved det dette dig din dine disse dit dog du efter "
        "eftersom ej eller ellers endnu endog engang enhver er et ethvert "
        "flere flest for foran forbi fordi fra få før gennem gør ham han hans "
        "har havde have hen hende hendes her heraf herefter herfra heri hermed "
        "herpå hinanden hos hun hvad hvem hver hverken hvert hvilke hvilken "
        "hvilket hvis hvor hvoraf hvordan hvorfor hvori hvormed hvornår i igen "
        "igennem ikke imellem imens imod ind inde inden indenfor indtil ingen "
        "intet ja jeg jer jeres jo kan kun kunne langs lige man mange med "
        "meget mellem men mens mere mest mig min mindre mindst mine mit mod "
        "mon må måske måtte ned nede nej nemlig netop nogen nogensinde noget "
        "nogle nok nu når nær næsten ofte og også om omkring op oppe os over "
        "overfor på samme sammen samt samtidig selv selvom siden sig sin sine "
        "sit skal skulle snart som stadig så sådan sådanne sådant således thi "
        "til tilbage trods ud ude uden udenfor under undtagen var ved vi via "
        "vil ville vor vore vores vort være været",
    .articles = "de den det en et",
    .of = "af",
};

const FunctionWords dutch_words = {
    .others =
        "aan aangaande achter af al aldaar aldus alhoewel alle allebei alleen "
        "alles als alsnog althans altijd ander andere anderen anders behalve "
        "beide beiden ben beneden bent betreffende bij bijna binnen boven "
        "bovendien buiten daar daarbij daardoor daarin daarmee daarna "
        "daarnaast daarom daarop daarover daartoe daarvan daarvoor dan dat "
        "deze dezelfde die dien dikwijls dit doch doen doet door doordat dus "
        "echter eens elk elkaar elke en enige enkele er erbij erdoor ergens "
        "ermee erna eronder erop erover ervan ervoor even evenals eveneens ge "
        "gedurende geen gehad geweest geworden had hadden heb hebben hebt "
        "heeft hem hen her hier hierbij hierdoor hierin hiermee hierna hierom "
        "hierop hierover hiervan hiervoor hij hoe hoewel hun hunne ieder "
        "iedere iedereen iemand iets ik in inmiddels is ja je jezelf jij jou "
        "jouw jullie kan kon konden kunnen kunt later maar me mede meer meest "
        "meestal men met mij mijn mijzelf mocht mochten moest moesten moet "
        "moeten mogen na naar naast nadat niemand niet niets nimmer noch nog "
        "nogal nooit nu of ofschoon om omdat omtrent ondanks onder ons onze "
        "ook op opdat over overal per reeds samen sedert sinds slechts sommige "
        "soms steeds te tegen tenzij terug terwijl thans toch toe toen tot "
        "totdat tussen u uit uw vaak vanaf vandaar vanuit vanwege veel vele "
        "verder via volgens voor vooral voordat vroeger waar waarbij waardoor "
        "waarin waarmee waarna waarom waarop waarover waartoe waarvan waarvoor "
        "want waren was wat we wel welk welke wellicht werd werden wezen wie "
        "wiens wier wij wil wilde wilden willen word worden wordt zal ze zeer "
        "zelf zelfs zich zichzelf zij zijn zijne zo zoals zodat zodra zonder "
        "zou zouden zowat zowel zulk zulke zullen zult",
    .articles = "de den der des een het n t",
    .of = "van",
};

const FunctionWords english_words = {
    .others =
        "about above across after afterwards again against all almost alone "
        "along already also although always am amid among amongst and another "
        "any anybody anyhow anyone anything anyway anywhere apart are around "
        "as aside at away be became because become becomes been before "
        "beforehand behind being below beneath beside besides between beyond "
        "both but by can can't cannot could despite did do does doing done "
        "down due during e.g each either else elsewhere enough etc even ever "
        "every everybody everyone everything everywhere except few fewer for "
        "formerly from further furthermore had has have having he hence her "
        "here hereby herein hers herself him himself his hither how however i "
        "i.e if in indeed inside instead into is it its itself just latter "
        "least less lest many may maybe me meanwhile might more moreover most "
        "mostly much must my myself namely neither never nevertheless no "
        "nobody none nonetheless nor not nothing now nowhere off often on once "
        "one ones only onto or other others otherwise ought our ours ourselves "
        "out outside over own per perhaps quite rather really s same shall "
        "shan't she should since so some somebody somehow someone something "
        "sometimes somewhere soon still such than that their theirs them "
        "themselves then thence there thereafter thereby therefore therein "
        "these they this those though through throughout thus till to together "
        "too toward towards under underneath unless unlike until up upon us "
        "very via vs was we were what whatever when whenever where whereas "
        "whereby wherein whereupon wherever whether which whichever while "
        "whilst whither who whoever whom whose why will with within without "
        "won't would yet you your yours yourself yourselves",
    .articles = "a an the",
    .of = "of",
};

const FunctionWords finnish_words = {
    .others =
        "aina alla alle alta ei eivät eli ellei emme en ennen entä et ette "
        "että he heidän heidät heihin heille heillä heiltä heissä heistä heitä "
        "hän häneen hänelle hänellä häneltä hänen hänessä hänestä hänet häntä "
        "ikään ilman itse ja jo johon joiden joihin joiksi joilla joille "
        "joilta joina joissa joista joita joka jokainen joko joku jolla jolle "
        "jolloin jolta jompikumpi jona jonka jopa jos joskus jossa josta jota "
        "jotka jotta juuri kaikkea kaikki kaikkien kanssa kautta ken keneen "
        "kenelle kenellä keneltä kenen kenessä kenestä ketkä ketä koko koska "
        "koskaan kuhunkin kuin kuinka kuitenkaan kuitenkin kuka kukaan kukin "
        "kumpi kumpikin kun kuten kyllä lähes läpi me meidän meidät meihin "
        "meille meillä meiltä meissä meistä meitä melko mihin miksi mikä "
        "mikään mille milloin millä miltä minkä minua minulla minulle minulta "
        "minun minussa minusta minut minuun minä missä mistä miten mitä mitään "
        "molemmat monet moni muiden muissa muita muka mukaan mutta muu muun "
        "muut muuta myös myöskin ne niiden niihin niille niillä niin niinkin "
        "niissä niistä niitä noiden noin noissa noista noita nuo nyt näiden "
        "näihin näille näillä näin näissä näistä näitä nämä ole olemme olen "
        "olet olette oli olimme olin olisi olisimme olisin olisit olisitte "
        "olisivat olit olitte olivat olla olleen olleet ollut on ovat paitsi "
        "paljon pian pitkin sama samaan samalla samat se sekä sellainen sen "
        "siellä sieltä sihen siihen siinä siis siitä sille silloin sillä siltä "
        "sinne sinua sinulla sinulle sinun sinussa sinusta sinut sinuun sinä "
        "sitten sitä taas tai te teidän teidät teihin teille teillä teiltä "
        "teissä teistä teitä tietenkin tosin tuo tuohon tuolla tuolle tuolta "
        "tuon tuossa tuosta tuota tähän tälle tällä tältä tämä tämän tänne "
        "tässä tästä tätä täällä täältä usein vaan vai vaikka vain varten "
        "vasta vastaan vielä voi voidaan voin voisi voivat yhä yli ympäri",
};

const FunctionWords french_words = {
    .others =
        "afin ai aie ainsi alors après assez au aucun aucune aujourd'hui "
        "auparavant auprès auquel aurai auraient aurait auront aussi aussitôt "
        "autant autour autre autrement autres aux auxquelles auxquels avaient "
        "avais avait avant avec avez avoir avons ayant beaucoup bien c' car ce "
        "ceci cela celle celles celui cependant certes ces cet cette ceux "
        "chacun chacune chaque chez ci comme comment contre dans davantage "
        "dehors delà depuis derrière desquelles desquels dessous dessus devant "
        "doit doivent donc dont duquel durant dès déjà elle elles en encore "
        "enfin ensuite entre envers es est et eu eurent eut eux furent fut "
        "guère hormis hors ici il ils j' jadis jamais je jusqu' jusque "
        "laquelle lequel lesquelles lesquels leur leurs lors lorsqu' lorsque "
        "lui là m' ma maintenant mais malgré me mes mien mienne miens moi "
        "moins mon même mêmes n' ne ni non nos notamment notre nous néanmoins "
        "nôtre on ont ou oui outre où par parce parfois parmi partout pas "
        "pendant peu peut peuvent peux plupart plus plusieurs plutôt "
        "pour pourquoi pourraient pourrait pourtant presque près pu puis "
        "puisqu' puisque qu' quand quant que quel quelle quelles quelqu' "
        "quelqu'un quelque quelquefois quelques quels qui quiconque quoi "
        "quoiqu' quoique rien s' sa sans sauf se selon sera seraient serait "
        "seront ses si sien sienne siens sinon soi soient sois soit sommes son "
        "sont sous souvent suis sur surtout t' ta tandis tant te tel telle "
        "telles tels tes toi ton toujours tous tout toute toutefois toutes "
        "trop très tu va vais vers via voici voilà vont vos votre vous vôtre y "
        "à étaient étais était étant été êtes être",
    .articles = "l' la le les un une",
    .of = "d' de des du",
};

const FunctionWords german_words = {
    .others =
        "ab aber abermals all alle allein allem allen aller allerdings alles "
        "als also am an ander andere anderem anderen anderer andererseits "
        "anderes anders anstatt auch auf aufgrund aus ausser außer außerdem "
        "außerhalb bald bei beide beiden beider beides beim beinahe bereits "
        "besonders bevor bin bis bisher bist bloß d.h da dabei dadurch dafür "
        "dagegen daher dahin damals damit danach daneben dann daran darauf "
        "daraus darf darin darum darunter darüber dass davon davor dazu daß "
        "dein deine deinem deinen deiner deines denen denn dennoch deren "
        "derjenige derselbe derzeit deshalb dessen desto deswegen dich "
        "diejenige diejenigen dies diese dieselbe dieselben diesem diesen "
        "dieser dieses dir doch dort du durch durfte dürfen dürfte eben "
        "ebenfalls ebenso ehe eigentlich einander einerseits einige einigem "
        "einigen einiger einiges einmal er erst es etwa etwas euch euer eure "
        "eurem euren eurer eures falls fast ferner für ganz gar gegen "
        "gegenüber gemäß genau gerade gern gewesen geworden habe haben hat "
        "hatte hatten her hier hin hingegen hinter hätte hätten ich ihm ihn "
        "ihnen ihr ihre ihrem ihren ihrer ihres im immer in indem infolge "
        "innerhalb ins insbesondere ist ja je jede jedem jeden jeder jedes "
        "jedoch jemals jemand jene jenem jenen jener jenes jetzt kann kaum "
        "kein keine keinem keinen keiner keines konnte konnten können könnte "
        "könnten lediglich man manch manche manchem manchen mancher manches "
        "manchmal mehr mehrere mehreren mein meine meinem meinen meiner meines "
        "meist meisten mich mir mit mithilfe mitunter muss musste mussten muß "
        "müssen müsste nach nachdem nachher neben nebst nein nicht nichts nie "
        "niemals niemand nirgends noch nun nur ob oben obgleich obwohl oder "
        "oft ohne per schon sehr sei seien sein seine seinem seinen seiner "
        "seines seit seitdem selber selbst sich sie sind so sobald sodass "
        "sofern sofort sogar solch solche solchem solchen solcher solches soll "
        "sollen sollte sollten somit sondern sonst soweit sowie sowohl statt "
        "stets trotz trotzdem u.a um umso und uns unser unsere unserem unseren "
        "unserer unseres unten unter unterhalb usw viel viele vielem vielen "
        "vieler vieles vielleicht vom von vor vorbei vorher wann war ward "
        "waren warum was weder wegen weil weitere weiterhin welche welchem "
        "welchen welcher welches wem wen wenig wenige weniger wenigstens wenn "
        "wenngleich wer werde werden weshalb wessen wie wieder wiederum will "
        "wir wird wo wobei wodurch wofür wohin wohl wollen wollte wollten "
        "womit woran worauf woraus worden worin worüber wovon wozu wurde "
        "wurden während wäre wären würde würden z.b zu zudem zuerst zufolge "
        "zugleich zuletzt zum zumal zur zurück zusammen zuvor zwar zwischen "
        "über überall überhaupt übrigens",
    .articles = "das dem den der des die ein eine einem einen einer eines",
    .of = "vom von",
    .genitive_articles = "der des einer eines",
};

const FunctionWords greek_words = {
    .others =
        "άλλα άλλες άλλη άλλο άλλοι άλλος άρα ένας έτσι έχει έχουν έχω έως ή "
        "ήδη ήταν ίδια ίδιο ίδιος ίσως αλλά αλλού αν ανά ανάμεσα αντί απ από "
        "ας αυτά αυτές αυτή αυτήν αυτοί αυτού αυτούς αυτό αυτόν αυτός αυτών "
        "αφού βέβαια γι για γιατί δε δεν δηλαδή δικό εάν είμαι είμαστε είναι "
        "είσαι είστε εγώ εδώ εκεί εκείνα εκείνη εκείνο εκείνος εκτός εμάς "
        "εμένα εμείς εναντίον ενώ εξαιτίας επάνω επί επίσης επειδή εσείς εσύ "
        "θα κάθε κάποια κάποιο κάποιοι κάποιος κάτι κάτω καθώς και κατά κι "
        "λόγω μέσα μέχρι μήπως μα μαζί μας με μετά μεταξύ μη μην μια μου "
        "μπορεί μπορούν μπροστά να ναι ξανά ούτε πάλι πάντα πάνω πάρα πέρα "
        "παρά περί περίπου πια πιο ποια ποιο ποιοι ποιος πολλά πολλές πολλοί "
        "πολύ ποτέ που πού πριν προς προτού πως πόσο πώς σ σαν σας σε σου στα "
        "στη στην στις στο στον στους συ σχεδόν τίποτα τι τόσο τότε τώρα υπέρ "
        "υπό χωρίς ως ωστόσο όλα όλες όλη όλο όλοι όλος όλων όμως όποιος όπου "
        "όπως όσα όσες όση όσο όσοι όσος όταν ότι όχι ύστερα ώστε",
    .articles = "ένα έναν ένας η μία μια ο οι τα τη την τις το τον τους",
    .of = "της του των",
};

const FunctionWords hungarian_words = {
    .others =
        "abba abban abból addig ahhoz ahogy ahol aki akik akit akkor alatt alá "
        "amely amelyek amelyekben amelyeket amelyet amelynek ami amik amikor "
        "amit amíg annak annál arra arról attól avval azok azokat azon azonban "
        "azonnal azt aztán azután azzal azért be bele belül benne biztos bár "
        "csak de e ebbe ebben ebből eddig egyes egyik egymás egyre egyéb egész "
        "ehhez ekkor el ellen elég elő előbb előtt engem ennek ennél enyém "
        "erre erről ettől ez ezek ezeket ezen ezt ezután ezzel ezért fel "
        "felett felé föl fölött ha hanem hiszen hogy hogyan hol hát ide igen "
        "ilyen ilyenkor immár is ismét itt jobban jól kell kellett keresztül "
        "ki kívül közben közé között közül le legalább lehet lehetett lenne "
        "lenni lennének lesz lett ma maga magát majd meg mellett mellé mely "
        "melyek melyik mert mi miatt mikor milyen minden mindenki mindent "
        "mindig mint mintha mit mivel most már mármint más második mások még "
        "míg na nagyon ne neki nekik nekünk nem néha néhány nélkül oda olyan "
        "ott pedig persze például rajta rá rólunk s saját se sem semmi "
        "semmilyen sok sokat sokkal során szemben szerint szinte tehát ti "
        "továbbá többi többé ugyan ugyanis után utána vagy vagyis vagyok "
        "vagyunk valaki valamely valami valamint van vannak vele vissza "
        "viszont volna volt voltak voltam voltunk végig által általában át én "
        "és így ön össze úgy újra ő ők őket",
    .articles = "a az egy",
};

const FunctionWords indonesian_words = {
    .others =
        "ada adalah agar akan aku anda antara apa apabila apakah atas atau "
        "bagai bagaimana bagi bahkan bahwa banyak beberapa begitu belum bila "
        "bisa bukan dalam dan dapat demi demikian dengan di dia ia ialah ini "
        "itu itulah jadi jika juga kalau kami kamu kapan karena ke kecuali "
        "kemudian kepada ketika kita lagi lain lalu lebih maka mana masih "
        "mereka meski meskipun mungkin namun nya oleh pada padahal para per "
        "pernah pula pun saja saling sama sambil sampai sang sangat satu saya "
        "sebab sebagai sebelum sebuah sedang sehingga sejak selain selalu "
        "selama seluruh semua seorang seperti sering serta sesudah setelah "
        "setiap si suatu sudah supaya tanpa tapi telah tentang terhadap tetapi "
        "tiap tidak untuk walau walaupun yaitu yakni yang",
    .of = "dari daripada",
};

const FunctionWords italian_words = {
    .others =
        "a abbia abbiamo abbiano accanto ad adesso affinché agl' agli ai al "
        "alcun alcuna alcune alcuni all' alla alle allo allora almeno altra "
        "altre altri altro altrui anche ancora anzi appena attraverso avendo "
        "avere avete aveva avevano avuto bensì c' che chi chiunque ci ciascuna "
        "ciascuno cioè ciò coi col coll' com' come comunque con contro cui da "
        "dagl' dagli dai dal dall' dalla dalle dallo davanti dentro dietro "
        "dopo dov' dove dunque durante e ebbe ecco ed egli ella entrambi "
        "eppure era erano essa esse essendo essere essi esso fa finché fino "
        "forse fosse fossero fra fu fuori furono già giù ha hai hanno ho il in "
        "infatti infine inoltre insieme intanto intorno invece io lei loro lui "
        "lungo là m' ma mai me meno mentre mi mia mie miei mio molta molte "
        "molti molto ne neanche negl' negli nei nel nell' nella nelle nello "
        "nemmeno neppure nessun nessuna nessuno niente noi non nonostante "
        "nostra nostre nostri nostro nulla né o od ogni ognuno oltre oppure "
        "ora ormai per perché perciò pertanto però piuttosto più poca poche "
        "pochi poco poi poiché possono presso prima proprio pur pure può qual "
        "qualche qualcosa qualcuno quale quali qualsiasi qualunque quando "
        "quanta quante quanti quanto quasi quegli quei quel quell' quella "
        "quelle quelli quello quest' questa queste questi questo qui quindi s' "
        "saranno sarebbe sarebbero sarà se secondo sei sempre senza si sia "
        "siamo siano siete solo soltanto sono sopra soprattutto sotto su sua "
        "subito sue sugli sui sul sull' sulla sulle sullo suo suoi sé tal tale "
        "tali talvolta tanta tante tanti tanto te ti tra tramite troppo tu tua "
        "tue tuo tuoi tutt' tutta tuttavia tutte tutti tutto v' verso vi via "
        "voi vostra vostre vostri vostro è",
    .articles = "gl' gli i il l' la le lo un un' una uno",
    .of = "d' de degl' degli dei del dell' della delle dello di",
};

const FunctionWords norwegian_words = {
    .others =
        "aldri alle allerede allikevel alltid alt altså andre annen annet at "
        "bak bare begge blant ble blei bli blir blitt både da de deg dei deim "
        "deira deires dem den denne der deres derfor derfra dermed dersom det "
        "dette di din disse ditt dog du dykk dykkar då eg ein eit eitt eller "
        "ellers elles enda enn ennå er et etter ettersom flere fleste for "
        "foran forbi fordi fra fram frå før først gjennom ha hadde ham han "
        "hans har hennar henne hennes her herfra hit hjå ho hoe honom hos hoss "
        "hossen hun hva hvem hver hverandre hvert hvilke hvilken hvilket hvis "
        "hvor hvordan hvorfor i igjen igjennom ikke ikkje imens imidlertid "
        "imot ingen ingi inkje inn inne innen intet ja jeg jo kan kanskje "
        "korleis korso kun kunne kva kvar kvarhelst kven kvi kvifor langs "
        "likevel man mange med medan meg meget mellom men mens mer mest mi min "
        "mindre mine minst mitt mot mykje må måtte ned nede nei nemlig nesten "
        "noe noen nok noka noko nokon nokor nokre nå når nær ofte og også om "
        "omkring opp oppe oss over på samme sammen samt seg selv selvom si sia "
        "sidan siden sin sine sitt sjøl skal skulle slik slike slikt snart so "
        "som somme somt stadig straks så sånn til tilbake tross um under "
        "unntatt upp ut ute uten utenfor var vart varte ved vere verte vi via "
        "vil ville vore vors vort vår våre være vært å",
    .articles = "de dei den det ei ein eit en et",
    .of = "av",
};

const FunctionWords portuguese_words = {
    .others =
        "a ainda algo algum alguma algumas alguns alguém ali além ambas ambos "
        "ante antes ao aonde aos apenas apesar após aquela aquelas aquele "
        "aqueles aqui aquilo assim através atrás até bem cada com como "
        "conforme contra contudo cuja cujas cujo cujos cá daquela daquelas "
        "daquele daqueles daqui debaixo dela delas dele deles depois desde "
        "dessa dessas desse desses desta destas deste destes diante disso "
        "disto durante e ela elas ele eles em embora enquanto entre então era "
        "eram essa essas esse esses esta estamos estar estas estava estavam "
        "este esteja estes esteve estou está estão eu foi fomos for foram "
        "fosse fossem fui haja havia houve há isso isto jamais já lhe lhes "
        "logo lá mais mas me menos mesma mesmas mesmo mesmos meu meus minha "
        "minhas muita muitas muito muitos na nada nas nela nele nem nenhum "
        "nenhuma nessa nesse nesta neste no nos nossa nossas nosso nossos num "
        "numa nunca não nós onde ora ou outra outras outro outros para pela "
        "pelas pelo pelos per perante pode podem poderá pois por porquanto "
        "porque portanto porém pouca poucas pouco poucos pôde quais quaisquer "
        "qual qualquer quando quanta quantas quanto quantos quase que quem "
        "quer quê se seja sejam sem sempre senão ser seria seriam será serão "
        "seu seus si sido sim sob sobre somente somos sou sua suas são só tais "
        "tal também tampouco tanta tantas tanto tantos te tem temos tenha "
        "tenho ter terá teu teus teve ti tinha tinham toda todas todavia todo "
        "todos tu tua tuas tudo tão têm você vocês vos vossa vossas vosso "
        "vossos à às é és",
    .articles = "a as o os um uma umas uns",
    .of = "d' da das de do dos",
};

const FunctionWords romanian_words = {
    .others =
        "a abia aceasta această aceea aceeași acei aceia acel acela acelaşi "
        "același acele acelea acest acesta aceste acestea acestei acestor "
        "acestora acestui aceşti aceştia acești aceștia acolo acum adică aici "
        "am ambele ambii apoi ar are asemenea asta astfel asupra atunci atât "
        "atâta atâtea atâţi atâți au avea aveau avem aveți avut aş aşa aţi aș "
        "așa ați bine ca care ce cea ceea cei cel cele celor ceva chiar ci "
        "cine cineva conform contra cu cui cum cumva când cât câte câteva câţi "
        "câţiva câți câțiva că căci cărei căror cărora cărui căruia către da "
        "dacă dar datorită deasupra deci decât deja deoarece despre deşi deși "
        "din dinspre dintr dintre după ea ei el ele era eram erau este eu eşti "
        "ești fi fie fiecare fiind fiindcă foarte fost fără i iar jos l la le "
        "li lor lângă m mai mea mei mele mereu meu mi mie mine mult multe "
        "multă mulţi mulți n ne nici nicio niciodată nimeni nimic noastre "
        "noastră noi nostru noştri noștri nu numai o oare ori oricare orice "
        "oricine oricum pe pentru peste poate pot prea prin printr printre "
        "puţin puțin până pînă s sa sale sau se spre sub sunt suntem sunteți "
        "sus sînt săi său ta tale te toate toată tot totul totuşi totuși toţi "
        "toți tu tăi tău unde undeva unele uneori unii unora unul v va vei "
        "veți voastre voastră voi vom vor vostru vouă vreo vreun vă îi îl îmi "
        "împotriva în înainte încât încă înspre însă întotdeauna într între "
        "întru îşi îţi își îți şi ţi și ți",
    .articles = "nişte niște o un unei unor unui",
    .of = "ai al ale de lui",
};

const FunctionWords russian_words = {
    .others =
        "а без более больше будем будет будете будто буду будут будучи бы был "
        "была были было быть в вам вами вас вдоль ведь весь вне вниз во вокруг "
        "вообще вот впрочем все всегда всего всей всем всеми всему всех всею "
        "всю вся всё вы где да даже для до его ее ей ему если есть еще ещё ею "
        "её же за затем здесь и из из-за или им именно ими иногда их к каждая "
        "каждого каждое каждой каждом каждую каждые каждый как какая какие "
        "каким каких какого какое какой какую когда кого ком кому конечно "
        "которая которого которое которой котором которому которую которые "
        "который которым которыми которых кроме кто куда ли либо лишь между "
        "меня мне мной мною мог могла могли могло могут моего моей может можно "
        "мои моим моих мой мочь моя моё мы на над надо наконец нам нами нас "
        "наш наша наше нашего нашей наши наших не него нее ней некоторые "
        "некоторый некоторых нельзя нем нему несмотря нет нею неё ни нибудь "
        "никакая никаких никакой никогда никто ним ними них ничего ничто но ну "
        "о об оба обе однако он она они оно опять от ото очень перед по под "
        "подобно пока после потом потому почему почти при про против ради раз "
        "разве с сам сама самая сами само самого самое самой самом самые самый "
        "самых свое своего своей своем своему свои своим своими своих свой "
        "свою своя своё своём себе себя сейчас сквозь слишком снова со собой "
        "собою согласно среди столь та так такая также такие таким таких "
        "такого такое такой там твой твоя те тебе тебя тем теми теперь тех то "
        "тобой тогда того тоже той только том тому тот тою тут ты у уж уже "
        "хотя чего чей чем чему через что чтоб чтобы чуть эта эти этим этими "
        "этих это этого этой этом этому этот эту я является являются",
};

const FunctionWords spanish_words = {
    .others =
        "a acá además ahora ahí al algo alguien alguna algunas alguno algunos "
        "algún allá allí ambas ambos ante antes apenas aquel aquella aquellas "
        "aquello aquellos aquél aquí así aun aunque aún bajo bastante bien "
        "cada casi cierto como con conmigo consigo contigo contra cual cuales "
        "cualquier cualquiera cuando cuanta cuantas cuanto cuantos cuya cuyas "
        "cuyo cuyos cuál cuáles cuándo cuánto cómo debajo debe deben debido "
        "delante demasiado demás dentro desde después detrás donde durante "
        "dónde e ella ellas ello ellos en encima enfrente entonces entre era "
        "eran eras eres es esa esas ese eso esos esta estaba estaban estamos "
        "estar estará estas este esto estos estoy estuvieron estuvo está están "
        "esté estén excepto fue fuera fueran fueron fuese fui ha haber habrá "
        "habría había habían hace hacia han has hasta hay haya hayan he hemos "
        "hoy hube hubo incluso jamás junto le les luego mas me mediante menos "
        "mi mientras mis misma mismas mismo mismos mucha muchas mucho muchos "
        "muy más mí mía mías mío míos nada nadie ni ninguna ninguno ningún no "
        "nos nosotras nosotros nuestra nuestras nuestro nuestros nunca o os "
        "otra otras otro otros para pero poca pocas poco pocos podrá podría "
        "por porque pronto pueda puede pueden pues puesto que quien quienes "
        "quizá quizás quién qué sea sean según ser será serán sería serían si "
        "sido siempre siendo sin sino so sobre sois solamente solo somos son "
        "soy su sus suya suyas suyo suyos sí sólo tal tales también tampoco "
        "tan tanta tantas tanto tantos te tendrá tenemos tener tengo tenía "
        "tenían ti tiene tienen toda todas todavía todo todos tras través tu "
        "tus tuvo tuya tuyo tú u unas unos usted ustedes varias varios "
        "vosotras vosotros vuestra vuestras vuestro vuestros y ya yo él éramos "
        "ésa ése ésta éstas éste éstos",
    .articles = "el la las lo los un una unas uno unos",
    .of = "de del",
};

const FunctionWords swedish_words = {
    .others =
        "aldrig all alla allt alltid alltså andra annan annat att bakom bara "
        "bland blev bli blir blivit borde bort bredvid båda både bör de dem "
        "den denna denne deras dess dessa dessutom detta dig din dina dit ditt "
        "dock du där därför därifrån därmed därpå då efter eftersom ej eller "
        "emot endast er era ert ett fast fler flera flesta fram framför från "
        "för före förrän först genom ha hade haft han hans har hela hellre hen "
        "henne hennes hit hon honom hos hur här i ibland icke ifrån igen "
        "igenom in inför inga ingen inget innan inne inom inte intill istället "
        "ja jag ju just kan kanske knappast kommer kring kunde kunna längs man "
        "med medan mellan men mer mera mest mig min mina mindre minst mitt mot "
        "mycket måste ned nedan nej ner nere ni nog nu när nära nästan någon "
        "någonsin någonting något några och ock också ofta om omkring oss ovan "
        "ovanför per på redan runt samma samt sedan sig sin sina sitt själv "
        "själva ska skall skulle snart som somliga strax så sådan sådana "
        "sådant således såsom såväl till tillbaka tills tillsammans trots "
        "tvärtom under upp uppe ur ut utan utanför ute utom vad var vara "
        "varandra vardera varför varit varje varken vars vart varvid vem vems "
        "vi via vid vidare vilka vilkas vilken vilket vill ville väl vår våra "
        "vårt än ändå ännu är även åt åter över",
    .articles = "de den det en ett",
    .of = "av",
};

const FunctionWords turkish_words = {
    .others =
        "acaba ama ancak artık asla aslında ayrıca az bana bazı bazıları belki "
        "ben beni benim beri bile biri birçok biz bize bizi bizim bu buna "
        "bunda bundan bunlar bunları bunların bunu bunun burada böyle böylece "
        "bütün da daha dahi de defa değil diye diğer dolayı dolayısıyla en "
        "eğer fakat gibi göre hala hangi hatta hem henüz hep hepsi her "
        "herhangi herkes hiç hiçbir ile ilgili ise itibaren için kadar karşı "
        "kendi kendine kendini ki kim kimi kimse mi mu mü mı nasıl ne neden "
        "nedenle nerede niye niçin o olan olarak oldu olduğu olduğunu olmadı "
        "olmak olması olmayan olsa olsun olup olur ona ondan onlar onlara "
        "onları onların onu onun orada oysa pek rağmen sadece sanki sen seni "
        "senin siz size sizi sizin sonra tarafından tüm var ve veya ya yani "
        "yine yok zaten çok çünkü öyle üzere şey şimdi şu şuna şunu şöyle",
    .articles = "bir",
};

}  // namespace vek::analysis
